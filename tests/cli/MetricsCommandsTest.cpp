// `velmora metrics` and the agent's textfile, judged by Prometheus's own checker: every recorded
// machine (and one with hostile volume names) gives a document promtool accepts, and the alert
// rules shipped in contrib/ pass their unit tests.
#include "VelmoraProcess.h"
#include "agent/MachineCopy.h"
#include "common/AtomicFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel::clitest {
namespace {

using ::testing::HasSubstr;
using testing::MachineCopy;
using ::testing::Not;

const std::string promtoolPath = "/usr/bin/promtool";
const std::filesystem::path rulesFolder =
    std::filesystem::path(testing::fixturePath("")) / ".." / ".." / "contrib" / "prometheus";

// promtool with `input` as its standard input (check metrics reads nothing else), run in
// `workingFolder`; its output and errors together.
Outcome promtool(const std::string& arguments, const std::filesystem::path& input,
                 const std::filesystem::path& workingFolder = ".") {
    return shell("cd '" + workingFolder.string() + "' && " + promtoolPath + " " + arguments + " <'" + input.string() +
                 "'");
}

bool havePromtool() {
    return std::filesystem::exists(promtoolPath);
}

// The document `velmora metrics` printed, checked by promtool; the text is returned for more checks.
std::string checkedMetrics(const std::string& machineFolder) {
    TemporaryFolder folder;
    const auto outcome = velmora({"--replay", machineFolder, "--data-dir", folder.path("data"), "metrics"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const auto file = folder.write("metrics.prom", outcome.out);
    const auto checked = promtool("check metrics", file);
    EXPECT_EQ(checked.status, 0) << machineFolder << ":\n" << checked.out << "\n" << outcome.out;
    return outcome.out;
}

TEST(MetricsCommands, EveryRecordedMachineGivesADocumentPrometheusAccepts) {
    if (!havePromtool()) GTEST_SKIP() << "promtool is not installed (scripts/install-deps installs it)";
    for (const auto& entry : std::filesystem::directory_iterator(testing::fixturePath("machines"))) {
        SCOPED_TRACE(entry.path().string());
        const auto text = checkedMetrics(entry.path().string());
        // Even a machine whose tools all fail has its findings and the time of the reading.
        EXPECT_THAT(text, HasSubstr("# TYPE velmora_findings gauge\n"));
        EXPECT_THAT(text, HasSubstr("velmora_snapshot_timestamp_seconds "));
    }
}

TEST(MetricsCommands, HostileVolumeNamesStillGiveAValidDocument) {
    if (!havePromtool()) GTEST_SKIP() << "promtool is not installed (scripts/install-deps installs it)";
    MachineCopy machine("linux-workstation");
    const auto lsblk = machine.folder() / "lsblk.json";
    const std::string hostile = R"(Q\"uote \\back\\ new\nline 🚀 \u001b[31mred \t tab)";
    auto text = *AtomicFile::read(lsblk);
    text.replace(text.find("USB STICK"), 9, hostile);
    AtomicFile::write(lsblk, text);

    const auto metrics = checkedMetrics(machine.folder().string());
    EXPECT_THAT(metrics, HasSubstr(R"(volume="Q\"uote \\back\\ new\nline 🚀 )"
                                   "\x1b[31mred \t tab\""));
}

TEST(MetricsCommands, TextfileFolderMustExist) {
    TemporaryFolder folder;
    const auto missing = folder.path("not-there");
    const auto outcome = velmora({"--replay", machine("linux-workstation"), "metrics", "--textfile-dir", missing});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr(missing));
    EXPECT_FALSE(std::filesystem::exists(missing));

    const auto written =
        velmora({"--replay", machine("linux-workstation"), "metrics", "--textfile-dir", folder.path()});
    EXPECT_EQ(written.status, 0) << written.err;
    EXPECT_THAT(*AtomicFile::read(folder.root() / "velmora.prom"), HasSubstr("velmora_volume_size_bytes{"));
}

TEST(MetricsCommands, TheAgentWritesTheTextfileEachCycleFromTheOptionOrTheSetting) {
    if (!havePromtool()) GTEST_SKIP() << "promtool is not installed (scripts/install-deps installs it)";
    MachineCopy machine("linux-workstation");
    TemporaryFolder textfiles;
    const std::vector<std::string> common{"--replay", machine.folder().string(), "--data-dir", machine.data().string()};
    auto run = [&](const std::vector<std::string>& extra) {
        auto arguments = common;
        arguments.insert(arguments.end(), {"agent", "run", "--once"});
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return velmora(arguments);
    };

    // A folder that is not there: a warning, the cycle goes on and finishes.
    const auto missing = textfiles.path("typo");
    const auto warned = run({"--textfile-dir", missing});
    EXPECT_EQ(warned.status, 0) << warned.err;
    EXPECT_THAT(warned.err, HasSubstr("Metrics not written"));
    EXPECT_FALSE(std::filesystem::exists(missing));

    const auto byOption = textfiles.makeFolder("option");
    EXPECT_EQ(run({"--textfile-dir", byOption}).status, 0);
    const auto file = std::filesystem::path(byOption) / "velmora.prom";
    const auto checked = promtool("check metrics", file);
    EXPECT_EQ(checked.status, 0) << checked.out;
    EXPECT_THAT(*AtomicFile::read(file), HasSubstr("velmora_agent_last_cycle_timestamp_seconds "));

    const auto bySetting = textfiles.makeFolder("setting");
    auto set = common;
    set.insert(set.end(), {"settings", "set", "metricsTextfileDirectory", bySetting});
    ASSERT_EQ(velmora(set).status, 0);
    const auto cycle = run({});
    EXPECT_EQ(cycle.status, 0) << cycle.err;
    EXPECT_THAT(*AtomicFile::read(std::filesystem::path(bySetting) / "velmora.prom"),
                HasSubstr("velmora_agent_interval_seconds 900\n"));
}

TEST(MetricsCommands, AlertRulesAreValidAndPassTheirUnitTests) {
    if (!havePromtool()) GTEST_SKIP() << "promtool is not installed (scripts/install-deps installs it)";
    const auto rules = promtool("check rules velmora-alerts.yml", "/dev/null", rulesFolder);
    EXPECT_EQ(rules.status, 0) << rules.out;
    EXPECT_THAT(rules.out, HasSubstr("SUCCESS: 6 rules found"));
    const auto tests = promtool("test rules velmora-alerts.test.yml", "/dev/null", rulesFolder);
    EXPECT_EQ(tests.status, 0) << tests.out;
    EXPECT_THAT(tests.out, Not(HasSubstr("FAILED")));
}

}  // namespace
}  // namespace corvel::clitest
