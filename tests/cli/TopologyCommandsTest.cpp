// `velmora topology` and `velmora hardware` on recorded machines, and the connection dimension
// they feed into `health`.
#include "cli/VelmoraProcess.h"
#include "common/Json.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using corvel::Json;
using corvel::clitest::machine;
using corvel::clitest::Outcome;
using ::testing::HasSubstr;
using ::testing::Not;

class TopologyCommands : public ::testing::Test {
protected:
    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--data-dir", dataDir_.path()});
        return corvel::clitest::velmora(arguments, {"NO_COLOR=1"});
    }
    corvel::clitest::TemporaryFolder dataDir_;
};

// What a person reads, in one reviewed file: the workstation's paths drawn with their speeds (the
// stick one step below its port, sharing it with a keyboard), then the findings with their
// recommendation, and the connection line of health; a recording without a sysfs tree shown as
// not inspected, with the reason; hardware saying what it could not read.
TEST_F(TopologyCommands, TextOutputsMatchTheReviewedCopy) {
    corvel::Json rendered = corvel::Json::object();
    for (const auto& [command, name] :
         {std::pair{"topology", "linux-workstation"}, std::pair{"health", "linux-workstation"},
          std::pair{"topology", "linux-docker-engine"}, std::pair{"status", "linux-docker-engine"},
          std::pair{"hardware", "linux-workstation"}}) {
        const auto outcome = run({"--replay", machine(name), command});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        rendered[std::string(command) + " " + name] = corvel::clitest::outputLines(outcome.out, machine(name));
    }
    corvel::testing::expectGolden("cli/topology-outputs.json", rendered);
}

TEST_F(TopologyCommands, JsonIsOneDocumentWithTransportsAndFindings) {
    const auto outcome = run({"--json", "--replay", machine("linux-workstation"), "topology"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto document = Json::parse(outcome.out);
    ASSERT_EQ(document["topologies"].size(), 3u);
    EXPECT_EQ(document["topologies"][0]["transport"], "pcie");
    EXPECT_EQ(document["topologies"][0]["effectiveLinkBitsPerSecond"], 16'000'000'000);
    EXPECT_EQ(document["topologies"][0]["findings"][0]["ruleID"], "topology.pcieDowntrained");
    EXPECT_EQ(document["topologies"][2]["path"].back()["linkBitsPerSecond"], 480'000'000);
}

TEST_F(TopologyCommands, HardwareJsonSaysWhatItCouldNotRead) {
    const auto json = run({"--json", "--replay", machine("linux-docker-engine"), "hardware"});
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_THAT(Json::parse(json.out)["warnings"][0].get<std::string>(), HasSubstr("no sysfs tree"));
    EXPECT_THAT(json.err, Not(HasSubstr("error")));
}

}  // namespace
