#include "agent/AgentLaunchFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

const AgentLaunch launch{"/opt/Velmora Tools/velmora", "/home/me/.local/share/velmora", 20};

TEST(AgentLaunchFiles, QuotesEachArgumentForItsFormat) {
    struct Case {
        std::string argument;
        std::string systemd;
        std::string desktop;
        std::string xml;
    };
    const std::vector<Case> cases{
        {"/usr/bin/velmora", "\"/usr/bin/velmora\"", "\"/usr/bin/velmora\"", "/usr/bin/velmora"},
        {"/a b/c", "\"/a b/c\"", "\"/a b/c\"", "/a b/c"},
        {"50%", "\"50%%\"", "\"50%%\"", "50%"},
        {"say \"hi\"", "\"say \\\"hi\\\"\"", "\"say \\\\\"hi\\\\\"\"", "say \"hi\""},
        {"$HOME", "\"$$HOME\"", "\"\\\\$HOME\"", "$HOME"},
        {"back\\slash", "\"back\\\\slash\"", "\"back\\\\\\\\slash\"", "back\\slash"},
        {"line\nbreak", "\"line\\x0abreak\"", "\"line break\"", "line\nbreak"},
        {"<a&b>", "\"<a&b>\"", "\"<a&b>\"", "&lt;a&amp;b&gt;"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(AgentLaunchFiles::systemdQuoted(c.argument), c.systemd) << c.argument;
        EXPECT_EQ(AgentLaunchFiles::desktopExecQuoted(c.argument), c.desktop) << c.argument;
        EXPECT_EQ(AgentLaunchFiles::xmlEscaped(c.argument), c.xml) << c.argument;
    }
}

TEST(AgentLaunchFiles, SystemdRunsOneCyclePerTimerTick) {
    EXPECT_THAT(AgentLaunchFiles::systemdService(launch),
                AllOf(HasSubstr("Type=oneshot\n"),
                      HasSubstr("ExecStart=\"/opt/Velmora Tools/velmora\" \"--data-dir\" "
                                "\"/home/me/.local/share/velmora\" \"agent\" \"run\" \"--once\"\n")));
    EXPECT_THAT(AgentLaunchFiles::systemdTimer(launch),
                AllOf(HasSubstr("OnUnitInactiveSec=20min\n"), HasSubstr("Unit=velmora-agent.service\n"),
                      HasSubstr("WantedBy=timers.target\n")));
}

TEST(AgentLaunchFiles, LoginItemsRunTheLongLivedAgent) {
    EXPECT_EQ(AgentLaunchFiles::launchAgentFileName(), "app.velmora.agent.plist");
    const std::string plist = AgentLaunchFiles::launchAgentPlist(launch);
    EXPECT_THAT(plist, AllOf(HasSubstr("<key>Label</key>\n\t<string>app.velmora.agent</string>"),
                             HasSubstr("\t\t<string>/opt/Velmora Tools/velmora</string>\n\t\t<string>--data-dir</string>\n"
                                       "\t\t<string>/home/me/.local/share/velmora</string>\n\t\t<string>agent</string>\n"
                                       "\t\t<string>run</string>\n\t</array>"),
                             HasSubstr("<key>RunAtLoad</key>\n\t<true/>"), Not(HasSubstr("--once"))));
    EXPECT_THAT(AgentLaunchFiles::autostartEntry(launch),
                AllOf(HasSubstr("[Desktop Entry]\nType=Application\n"),
                      HasSubstr("Exec=\"/opt/Velmora Tools/velmora\" \"--data-dir\" \"/home/me/.local/share/velmora\" "
                                "\"agent\" \"run\"\n"),
                      Not(HasSubstr("--once"))));
}

}  // namespace
}  // namespace corvel
