// Names of running applications: app bundles from executable paths, command names from /proc.
#include "cleanup/RunningApplications.h"

#include "common/Platform.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace corvel {
namespace {

TEST(RunningApplicationNames, TheOutermostBundleNamesTheApplication) {
    struct Case {
        const char* path;
        std::optional<std::string> name;
    };
    for (const auto& [path, name] : {
             Case{"/Applications/Slack.app/Contents/MacOS/Slack", "Slack"},
             Case{
                 "/Applications/Slack.app/Contents/Frameworks/Slack Helper (GPU).app/Contents/MacOS/Slack Helper (GPU)",
                 "Slack"},
             Case{"/Users/me/Applications/Visual Studio Code.app/Contents/MacOS/Electron", "Visual Studio Code"},
             Case{"/usr/libexec/trustd", std::nullopt},
             Case{"/opt/tools/bin/not.app", std::nullopt},  // an executable named like a bundle is none
             Case{"/x/.app/y", std::nullopt},
             Case{"", std::nullopt},
         })
        EXPECT_EQ(RunningApplicationNames::bundleName(path), name) << path;
}

TEST(RunningApplicationNames, CommandNamesAndProcessEntries) {
    EXPECT_EQ(RunningApplicationNames::commandName("slack\n"), "slack");
    EXPECT_EQ(RunningApplicationNames::commandName("Web Content\n"), "Web Content");
    EXPECT_EQ(RunningApplicationNames::commandName("\n"), std::nullopt);
    EXPECT_EQ(RunningApplicationNames::commandName(""), std::nullopt);
    EXPECT_TRUE(RunningApplicationNames::isProcessEntry("4242"));
    for (const char* name : {"self", "", "12a", "thread-self"})
        EXPECT_FALSE(RunningApplicationNames::isProcessEntry(name)) << name;
}

TEST(RunningApplications, ThisMachinesListHoldsAProcessWeStarted) {
    if (hostPlatform() != Platform::linux) GTEST_SKIP() << "command names are what Linux lists; macOS lists bundles";
    // A copy of sleep under a name of our own, so the name cannot come from anything else.
    testing::TemporaryFolder folder;
    const auto program = folder.root() / "velmora-probe";
    std::filesystem::copy_file("/bin/sleep", program);
    testing::ChildProcess child({program.string(), "30"});
    EXPECT_TRUE(testing::eventually([&] { return systemRunningApplications()->names().count("velmora-probe") == 1; }));
}

}  // namespace
}  // namespace corvel
