// `velmora topology` and `velmora hardware` on recorded machines, and the connection dimension
// they feed into `health`.
#include "cli/VelmoraProcess.h"
#include "common/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using corvel::Json;
using corvel::clitest::lineWith;
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

TEST_F(TopologyCommands, DrawsEachPathWithItsSpeedsThenTheFindings) {
    const auto outcome = run({"--replay", machine("linux-workstation"), "topology"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(lineWith(outcome.out, "(nvme0n1)"), HasSubstr("PCI Express \u00B7 16 Gb/s effective"));
    // The disk is one step below its port, with the negotiated speed beside it.
    EXPECT_THAT(lineWith(outcome.out, "\u2514\u2500 SanDisk Ultra Fit [disk]"), HasSubstr("480 Mb/s"));
    EXPECT_THAT(lineWith(outcome.out, "Shares the path with"), HasSubstr("Keyboard"));
    const auto findings = outcome.out.substr(outcome.out.find("\nFindings\n"));
    EXPECT_THAT(findings,
                HasSubstr("Warning   Samsung SSD 980 PRO 1TB (nvme0n1): NVMe drive trained below its PCIe link"));
    EXPECT_THAT(findings, HasSubstr("Recommendation: Move the drive to an M.2 slot"));

    const auto health = run({"--replay", machine("linux-workstation"), "health"});
    EXPECT_THAT(lineWith(health.out, "Connection Performance"),
                HasSubstr("Attention  NVMe drive trained below its PCIe link"));
}

TEST_F(TopologyCommands, RecordingWithoutTopologyShowsUnknownAndAWarning) {
    const auto outcome = run({"--replay", machine("linux-docker-engine"), "topology"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("not inspected"));
    EXPECT_THAT(outcome.out, HasSubstr("No link findings."));
    EXPECT_THAT(lineWith(outcome.out, "Topology not read"), HasSubstr("the recording has no sysfs tree"));
    const auto status = run({"--replay", machine("linux-docker-engine"), "status"});
    EXPECT_THAT(lineWith(status.out, "Connection Performance"), HasSubstr("Topology not yet inspected."));
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

TEST_F(TopologyCommands, HardwareSaysWhatItCouldNotRead) {
    const auto outcome = run({"--replay", machine("linux-workstation"), "hardware"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(lineWith(outcome.out, "Model"), HasSubstr("unknown"));
    EXPECT_THAT(outcome.out, HasSubstr("No scan of an internal disk yet"));
    const auto json = run({"--json", "--replay", machine("linux-docker-engine"), "hardware"});
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_THAT(Json::parse(json.out)["warnings"][0].get<std::string>(), HasSubstr("no sysfs tree"));
    EXPECT_THAT(json.err, Not(HasSubstr("error")));
}

}  // namespace
