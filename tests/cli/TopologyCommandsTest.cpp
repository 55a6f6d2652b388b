// `velmora topology` and `velmora hardware` on recorded machines, and the connection dimension
// they feed into `health`.
#include "cli/VelmoraProcess.h"
#include "common/Json.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using clitest::machine;
using ::testing::HasSubstr;
using ::testing::Not;

// What a person reads, in one reviewed file: the workstation's paths drawn with their speeds (the
// stick one step below its port, sharing it with a keyboard), then the findings with their
// recommendation, and the connection line of health; a recording without a sysfs tree shown as
// not inspected, with the reason; hardware saying what it could not read.
TEST(TopologyCommands, TextOutputsMatchTheReviewedCopy) {
    clitest::Sandbox box;
    Json rendered = Json::object();
    for (const auto& [command, name] :
         {std::pair{"topology", "linux-workstation"}, std::pair{"health", "linux-workstation"},
          std::pair{"topology", "linux-docker-engine"}, std::pair{"status", "linux-docker-engine"},
          std::pair{"hardware", "linux-workstation"}}) {
        const auto outcome = box.run({"--replay", machine(name), command});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        rendered[std::string(command) + " " + name] = clitest::outputLines(outcome.out, machine(name));
    }
    testing::expectGolden("cli/topology-outputs.json", rendered);
}

TEST(TopologyCommands, JsonIsOneDocumentWithTransportsFindingsAndWhatCouldNotBeRead) {
    clitest::Sandbox box;
    const auto document = box.json({"--replay", machine("linux-workstation"), "topology"});
    ASSERT_EQ(document["topologies"].size(), 3u);
    EXPECT_EQ(document["topologies"][0]["findings"][0]["ruleID"], "topology.pcieDowntrained");
    EXPECT_EQ(document["topologies"][2]["path"].back()["linkBitsPerSecond"], 480'000'000);

    const auto hardware = box.run({"--json", "--replay", machine("linux-docker-engine"), "hardware"});
    ASSERT_EQ(hardware.status, 0) << hardware.err;
    EXPECT_THAT(Json::parse(hardware.out)["warnings"][0].get<std::string>(), HasSubstr("no sysfs tree"));
    EXPECT_THAT(hardware.err, Not(HasSubstr("error")));
}

}  // namespace
}  // namespace corvel
