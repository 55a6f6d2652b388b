// Registration against scripted launchctl and systemctl in a temporary home: nothing here ever
// talks to this machine's service manager.
#include "agent/AgentRegistration.h"

#include "command/CommandError.h"
#include "common/AtomicFile.h"
#include "support/ScriptedRunner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace corvel {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using testing::ScriptedRunner;
using testing::TemporaryFolder;
using Call = ScriptedRunner::Call;

const AgentLaunch launch{"/usr/local/bin/velmora", "/data", 15};
const std::string systemctl = "/usr/bin/systemctl";
const std::string launchctl = "/bin/launchctl";

struct Host {
    TemporaryFolder folder;
    ScriptedRunner runner;
    std::set<std::string> tools{systemctl, launchctl};
    AgentHost host;

    explicit Host(Platform platform) {
        host.platform = platform;
        host.home = folder.root() / "home";
        host.configHome = folder.root() / "config";
        host.runner = &runner;
        host.installed = [this](const std::string& executable) { return tools.count(executable) > 0; };
    }
    void userSystemd() {
        runner.answer(systemctl, {"--user", "show-environment"}, "HOME=/home/me\n");
        runner.answer(systemctl, {"--user", "daemon-reload"}, "");
        runner.answer(systemctl, {"--user", "enable", "--now", "velmora-agent.timer"}, "");
        runner.answer(systemctl, {"--user", "disable", "--now", "velmora-agent.timer"}, "");
        runner.answer(systemctl, {"--user", "is-enabled", "velmora-agent.timer"}, "enabled\n");
    }
    std::filesystem::path unit(const char* name) const { return folder.root() / "config/systemd/user" / name; }
};

TEST(AgentRegistration, UserSystemdGetsAServiceAndATimerOnce) {
    Host linux(Platform::linux);
    linux.userSystemd();
    const auto first = AgentRegistration::registerAgent(linux.host, launch);
    EXPECT_TRUE(first.changed);
    EXPECT_EQ(first.line, "agent: registered: systemd --user timer velmora-agent.timer, one check every 15 minutes");
    EXPECT_EQ(AtomicFile::read(linux.unit("velmora-agent.service")), AgentLaunchFiles::systemdService(launch));
    EXPECT_EQ(AtomicFile::read(linux.unit("velmora-agent.timer")), AgentLaunchFiles::systemdTimer(launch));
    EXPECT_TRUE(linux.runner.ranWith({"--user", "enable", "--now", "velmora-agent.timer"}));

    linux.runner.calls.clear();
    const auto second = AgentRegistration::registerAgent(linux.host, launch);
    EXPECT_FALSE(second.changed);
    EXPECT_THAT(second.line, StartsWith("agent: already registered: systemd --user timer"));
    EXPECT_FALSE(linux.runner.ranWith({"--user", "daemon-reload"}));

    // A new interval rewrites the timer.
    const auto changed = AgentRegistration::registerAgent(linux.host, AgentLaunch{launch.program, launch.dataFolder, 30});
    EXPECT_TRUE(changed.changed);
    EXPECT_THAT(*AtomicFile::read(linux.unit("velmora-agent.timer")), HasSubstr("OnUnitInactiveSec=30min"));

    const auto gone = AgentRegistration::unregisterAgent(linux.host);
    EXPECT_THAT(gone.line, StartsWith("agent: unregistered: removed "));
    EXPECT_TRUE(linux.runner.ranWith({"--user", "disable", "--now", "velmora-agent.timer"}));
    EXPECT_FALSE(std::filesystem::exists(linux.unit("velmora-agent.service")));
    EXPECT_FALSE(AgentRegistration::inspect(linux.host).mechanism);
    EXPECT_EQ(AgentRegistration::unregisterAgent(linux.host).line, "agent: not registered");
}

TEST(AgentRegistration, WithoutUserSystemdAnAutostartEntryIsWritten) {
    for (const bool installed : {true, false}) {
        Host linux(Platform::linux);
        if (!installed) linux.tools.clear();
        linux.runner.answer(systemctl, {"--user", "show-environment"},
                            CommandError::failed(1, "Failed to connect to bus: No medium found"));
        const auto outcome = AgentRegistration::registerAgent(linux.host, launch);
        EXPECT_THAT(outcome.line, HasSubstr("XDG autostart entry")) << installed;
        const auto entry = linux.folder.root() / "config/autostart/velmora-agent.desktop";
        EXPECT_EQ(AtomicFile::read(entry), AgentLaunchFiles::autostartEntry(launch));
        EXPECT_EQ(AgentRegistration::inspect(linux.host),
                  (AgentRegistration::Registration{AgentMechanism::autostart, {entry.string()}}));
        EXPECT_FALSE(AgentRegistration::registerAgent(linux.host, launch).changed);
        if (!installed) {
            EXPECT_THAT(linux.runner.calls, IsEmpty());
        }

        // Once user systemd answers, the timer replaces the entry: one way of starting at a time.
        linux.tools.insert(systemctl);
        linux.userSystemd();
        AgentRegistration::registerAgent(linux.host, launch);
        EXPECT_FALSE(std::filesystem::exists(entry));
        EXPECT_EQ(AgentRegistration::inspect(linux.host).mechanism, AgentMechanism::systemdUser);
    }
}

TEST(AgentRegistration, MacOSLoadsALaunchAgent) {
    Host mac(Platform::macos);
    const auto plist = mac.folder.root() / "home/Library/LaunchAgents/app.velmora.agent.plist";
    mac.runner.answer(launchctl, {"load", "-w", plist.string()}, "");
    mac.runner.answer(launchctl, {"list", "app.velmora.agent"}, "{ \"Label\" = \"app.velmora.agent\"; };");
    const auto outcome = AgentRegistration::registerAgent(mac.host, launch);
    EXPECT_TRUE(outcome.changed);
    EXPECT_EQ(AtomicFile::read(plist), AgentLaunchFiles::launchAgentPlist(launch));
    EXPECT_THAT(mac.runner.calls, Contains(Call{launchctl, {"load", "-w", plist.string()}}));
    EXPECT_FALSE(AgentRegistration::registerAgent(mac.host, launch).changed);

    mac.runner.answer(launchctl, {"unload", "-w", plist.string()}, "");
    AgentRegistration::unregisterAgent(mac.host);
    EXPECT_THAT(mac.runner.calls, Contains(Call{launchctl, {"unload", "-w", plist.string()}}));
    EXPECT_FALSE(std::filesystem::exists(plist));
}

TEST(AgentRegistration, ARefusalNamesTheCommandAndNeverAsksForForce) {
    Host mac(Platform::macos);
    mac.runner.answer(launchctl, {"load", "-w", mac.host.launchAgentPath().string()},
                      CommandError::failed(5, "Load failed: 5: Input/output error"));
    try {
        AgentRegistration::registerAgent(mac.host, launch);
        FAIL() << "a refused load must throw";
    } catch (const AgentRegistrationError& error) {
        EXPECT_THAT(error.what(), HasSubstr("/bin/launchctl load -w "));
        EXPECT_THAT(error.what(), HasSubstr("Input/output error"));
    }
    for (const auto& policy : {AgentRegistration::launchctlPolicy(), AgentRegistration::systemctlPolicy()})
        for (const auto& prefix : policy.allowedPrefixes) EXPECT_THAT(prefix, Not(Contains(HasSubstr("force"))));
}

}  // namespace
}  // namespace corvel
