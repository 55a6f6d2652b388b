#include "processes/ProcessGrouping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using Kind = ProcessGroup::Kind;

constexpr std::uint32_t me = 501;

ProcessSample process(std::int32_t pid, std::uint32_t uid, std::string name, std::optional<std::string> executable,
                      double cpu = 0, std::int64_t memory = 0, std::int32_t parent = 300) {
    ProcessSample sample;
    sample.pid = pid;
    sample.parentPid = parent;
    sample.uid = uid;
    sample.name = std::move(name);
    sample.executablePath = std::move(executable);
    sample.startTime = static_cast<std::uint64_t>(pid) * 7;
    sample.cpuPercent = cpu;
    sample.memoryBytes = memory;
    sample.memoryKind = MemoryKind::footprint;
    return sample;
}

auto groupNamed(const std::string& name, Kind kind, std::vector<std::int32_t> pids) {
    return AllOf(Field(&ProcessGroup::name, name), Field(&ProcessGroup::kind, kind), Field(&ProcessGroup::pids, pids));
}

TEST(ProcessGrouping, MacAppsGatherEverythingInsideTheirOutermostBundle) {
    const std::string chrome = "/Applications/Google Chrome.app";
    const std::vector<ProcessSample> samples{
        process(900, me, "Google Chrome", chrome + "/Contents/MacOS/Google Chrome", 3.5, 400'000'000),
        process(905, me, "Google Chrome He",
                chrome + "/Contents/Frameworks/Google Chrome Framework.framework/Versions/A/Helpers/"
                         "Google Chrome Helper (Renderer).app/Contents/MacOS/Google Chrome Helper (Renderer)",
                1.5, 100'000'000),
        process(700, me, "zsh", "/bin/zsh", 0, 4'000'000),
        process(701, me, "zsh", "/bin/zsh", 0.5, 5'000'000),
        process(1, 0, "launchd", "/sbin/launchd", 0.1, 30'000'000, 0),
    };
    const auto groups = ProcessGrouping::group(samples, {Platform::macos, me, {}});
    ASSERT_THAT(groups,
                ElementsAre(groupNamed("Google Chrome", Kind::app, {900, 905}),
                            groupNamed("launchd", Kind::system, {1}), groupNamed("zsh", Kind::process, {700, 701})));
    // clang-format off
    EXPECT_EQ(groups[0], (ProcessGroup{"501:" + chrome, "Google Chrome", Kind::app, chrome,
                                       chrome + "/Contents/MacOS/Google Chrome", {900, 905}, true, 5.0, 500'000'000,
                                       MemoryKind::footprint, me}));
    // clang-format on
    EXPECT_FALSE(groups[1].isCurrentUser);
    EXPECT_EQ(groups[2].id, "501:zsh");
}

TEST(ProcessGrouping, BundlePrefixNeedsAFolderNamedApp) {
    EXPECT_EQ(ProcessGrouping::appBundle("/Applications/Safari.app/Contents/MacOS/Safari"), "/Applications/Safari.app");
    EXPECT_EQ(ProcessGrouping::appBundle("/usr/local/bin/tool.app"), std::nullopt);
    EXPECT_EQ(ProcessGrouping::appBundle("/Users/me/.app/bin/x"), std::nullopt);
    EXPECT_EQ(ProcessGrouping::appBundle("/opt/homebrew/bin/node"), std::nullopt);
}

TEST(ProcessGrouping, SystemKindIsForKernelThreadsAndRootsDaemons) {
    auto kworker = process(11, 0, "kworker/0:1-events", std::nullopt, 0, 0, 2);
    kworker.isKernelThread = true;
    auto kworker2 = process(12, 0, "kworker/u8:0-kvfree_rcu_reclaim", std::nullopt, 0, 0, 2);
    kworker2.isKernelThread = true;
    const std::vector<ProcessSample> samples{
        kworker,
        kworker2,
        process(400, 0, "sshd", "/usr/sbin/sshd", 0, 0, 1),    // a daemon of root's
        process(410, 0, "sshd", "/usr/sbin/sshd", 0, 0, 400),  // its per-connection child joins it
        process(500, 0, "vim", "/usr/bin/vim", 0, 0, 480),     // root editing a file: root's own work
        process(600, 103, "systemd-timesyn", "/lib/systemd/systemd-timesyncd", 0, 0, 1),  // a service user
    };
    const auto groups = ProcessGrouping::group(samples, {Platform::linux, 0, {}});
    EXPECT_THAT(
        groups,
        ElementsAre(groupNamed("kworker", Kind::system, {11, 12}), groupNamed("sshd", Kind::system, {400, 410}),
                    groupNamed("systemd-timesyncd", Kind::process, {600}), groupNamed("vim", Kind::process, {500})));
    EXPECT_EQ(groups[0].id, "0:[kworker]");
    EXPECT_TRUE(groups[3].isCurrentUser);
    EXPECT_FALSE(groups[2].isCurrentUser);
}

TEST(ProcessGrouping, LinuxAppsByDesktopEntryElseByProgramAndOwner) {
    // clang-format off
    const std::string applications = "/usr/share/applications/";
    DesktopEntry firefox{"firefox-esr", "Firefox ESR", applications + "firefox-esr.desktop",
                         {"/usr/lib/firefox-esr/firefox-esr"}, "firefox-esr", std::nullopt};
    // Started through a launcher, so only its window class names the program.
    DesktopEntry code{"com.visualstudio.code", "Visual Studio Code", applications + "com.visualstudio.code.desktop",
                      {"flatpak", "run", "com.visualstudio.code"}, std::nullopt, "Code"};
    DesktopEntry monitor{"gnome-system-monitor", "System Monitor", applications + "gnome-system-monitor.desktop",
                         {"gnome-system-monitor"}, "gnome-system-monitor", std::nullopt};
    // clang-format on
    auto pss = process(3000, 1000, "Isolated Web Co", "/usr/lib/firefox-esr/firefox-esr", 2, 300, 2990);
    pss.memoryKind = MemoryKind::proportional;
    auto rss = process(2990, 1000, "firefox-esr", "/usr/lib/firefox-esr/firefox-esr", 1, 700, 1);
    rss.memoryKind = MemoryKind::resident;
    const std::vector<ProcessSample> samples{
        rss,
        pss,
        // Another user's Firefox is another group of the same app.
        process(3100, 1001, "firefox-esr", "/usr/lib/firefox-esr/firefox-esr"),
        // Found by its window class when the program name says nothing.
        process(3200, 1000, "code", "/app/extra/vscode/code"),
        // A name cut at 15 bytes still finds the program it starts.
        process(3300, 1000, "gnome-system-mo", std::nullopt),
        process(3400, 1000, "python3", "/usr/bin/python3.11"),
        process(3500, 1001, "python3", "/usr/bin/python3.11"),
    };
    const auto groups = ProcessGrouping::group(samples, {Platform::linux, 1000, {firefox, code, monitor}});
    EXPECT_THAT(
        groups,
        ElementsAre(groupNamed("Firefox ESR", Kind::app, {2990, 3000}), groupNamed("Firefox ESR", Kind::app, {3100}),
                    groupNamed("System Monitor", Kind::app, {3300}),
                    groupNamed("Visual Studio Code", Kind::app, {3200}),
                    groupNamed("python3.11", Kind::process, {3400}), groupNamed("python3.11", Kind::process, {3500})));
    EXPECT_EQ(groups[0].id, "1000:/usr/share/applications/firefox-esr.desktop");
    EXPECT_EQ(groups[0].appPath, "/usr/share/applications/firefox-esr.desktop");
    // A total that mixes PSS and RSS is only as exact as RSS.
    EXPECT_EQ(groups[0].memoryKind, MemoryKind::resident);
    EXPECT_EQ(groups[0].memoryBytes, 1000);
    EXPECT_EQ(groups[1].id, "1001:/usr/share/applications/firefox-esr.desktop");
    EXPECT_EQ(groups[5].id, "1001:python3.11");
    // macOS bundles mean nothing on Linux, and desktop entries nothing on macOS.
    const auto onMac = ProcessGrouping::group({samples[0]}, {Platform::macos, 1000, {firefox}});
    EXPECT_THAT(onMac, ElementsAre(groupNamed("firefox-esr", Kind::process, {2990})));
}

TEST(ProcessGrouping, SortsBusiestFirstWithStableTies) {
    std::vector<ProcessSample> samples{process(1, me, "a", "/bin/a", 5, 10), process(2, me, "b", "/bin/b", 50, 5),
                                       process(3, me, "c", "/bin/c", 5, 900), process(4, me, "d", "/bin/d", 0, 900)};
    const auto groups = ProcessGrouping::group(samples, {Platform::macos, me, {}});
    const auto names = [](const std::vector<ProcessGroup>& list) {
        std::vector<std::string> result;
        for (const auto& each : list) result.push_back(each.name);
        return result;
    };
    EXPECT_THAT(names(ProcessGrouping::sorted(groups, ProcessSort::cpu)), ElementsAre("b", "a", "c", "d"));
    EXPECT_THAT(names(ProcessGrouping::sorted(groups, ProcessSort::memory)), ElementsAre("c", "d", "a", "b"));

    // A table names the memory figure once only when every group measures the same kind.
    EXPECT_EQ(ProcessGrouping::sharedMemoryKind(groups), MemoryKind::footprint);
    auto mixed = groups;
    mixed.back().memoryKind = MemoryKind::resident;
    EXPECT_EQ(ProcessGrouping::sharedMemoryKind(mixed), std::nullopt);
    EXPECT_EQ(ProcessGrouping::sharedMemoryKind({}), std::nullopt);
}

TEST(ProcessGrouping, FindByIdThenNameThenCaseThenPid) {
    const std::vector<ProcessSample> samples{process(10, me, "node", "/usr/bin/node"),
                                             process(11, 0, "node", "/usr/bin/node"),
                                             process(12, me, "Xcode", "/Applications/Xcode.app/Contents/MacOS/Xcode"),
                                             process(13, me, "xcode", "/usr/local/bin/xcode")};
    const auto groups = ProcessGrouping::group(samples, {Platform::macos, me, {}});
    const auto ids = [](const std::vector<ProcessGroup>& found) {
        std::vector<std::string> result;
        for (const auto& each : found) result.push_back(each.id);
        return result;
    };
    EXPECT_THAT(ids(ProcessGrouping::find(groups, "node")), ElementsAre("0:node", "501:node"));
    EXPECT_THAT(ids(ProcessGrouping::find(groups, "0:node")), ElementsAre("0:node"));
    EXPECT_THAT(ids(ProcessGrouping::find(groups, "Xcode")), ElementsAre("501:/Applications/Xcode.app"));
    EXPECT_THAT(ids(ProcessGrouping::find(groups, "XCODE")), ElementsAre("501:/Applications/Xcode.app", "501:xcode"));
    EXPECT_THAT(ids(ProcessGrouping::find(groups, "13")), ElementsAre("501:xcode"));
    EXPECT_THAT(ProcessGrouping::find(groups, "14"), IsEmpty());
    EXPECT_THAT(ProcessGrouping::find(groups, "nodejs"), IsEmpty());
}

TEST(ProcessGrouping, TargetsCarryTheSampledStartTimes) {
    const std::vector<ProcessSample> samples{process(10, me, "node", "/usr/bin/node"),
                                             process(12, me, "node", "/usr/bin/node")};
    const auto group = ProcessGrouping::group(samples, {Platform::linux, me, {}}).front();
    EXPECT_THAT(ProcessGrouping::targets(group, samples), ElementsAre(ProcessTarget{10, 70}, ProcessTarget{12, 84}));
    // A pid the sample does not vouch for matches no running process.
    auto stale = group;
    stale.pids.push_back(99);
    EXPECT_THAT(ProcessGrouping::targets(stale, samples).back(), (ProcessTarget{99, 0}));
}

}  // namespace
}  // namespace corvel
