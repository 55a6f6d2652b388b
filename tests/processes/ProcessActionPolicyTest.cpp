#include "processes/ProcessActionPolicy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace corvel {
namespace {

using Kind = ProcessGroup::Kind;
using ProcessActionPolicy::Decision;

constexpr std::int32_t ownPID = 4242;
const std::string self = "This is Velmora itself.";
const std::string system = "System process \u2014 macOS manages it.";
const std::string protection = "Protected: stopping it would disrupt macOS.";
const std::string onlyApps = "Only apps can be relaunched.";

ProcessGroup groupOf(std::string name, Kind kind, std::optional<std::string> appPath, bool isCurrentUser,
                     std::vector<std::int32_t> pids = {100, 101}) {
    ProcessGroup group;
    group.id = "501:" + name;
    group.name = std::move(name);
    group.kind = kind;
    group.appPath = std::move(appPath);
    group.isCurrentUser = isCurrentUser;
    group.pids = std::move(pids);
    return group;
}

struct Case {
    const char* title;
    ProcessAction action;
    ProcessGroup group;
    std::optional<std::string> refusal;  // absent: allowed
};

TEST(ProcessActionPolicy, FirstRuleThatAppliesDecides) {
    const std::string safari = "/Applications/Safari.app";
    const auto quit = ProcessAction::quit, force = ProcessAction::forceQuit, relaunch = ProcessAction::relaunch;
    const std::optional<std::string> none, allowed;
    const bool mine = true, theirs = false;
    // clang-format off
    const Case cases[] = {
        // Our own process is refused before anything else, even where every other rule allows.
        {"own app", quit, groupOf("Velmora", Kind::app, "/Applications/Velmora.app", mine, {99, ownPID}), self},
        {"own process of another user's kind", force, groupOf("launchd", Kind::system, none, theirs, {ownPID}), self},
        // Rule 2: a system group passes only with an app path.
        {"system app of the user", quit, groupOf("Helper", Kind::system, safari, mine), allowed},
        {"system app relaunch", relaunch, groupOf("Helper", Kind::system, safari, mine), allowed},
        {"system process of the user", quit, groupOf("Helper", Kind::system, none, mine), system},
        // Another user's group is the system's, whatever its name or kind.
        {"other user's app", quit, groupOf("Safari", Kind::app, safari, theirs), system},
        {"other user's plain process", relaunch, groupOf("sleep", Kind::process, none, theirs), system},
        {"other user's protected name", quit, groupOf("WindowServer", Kind::process, none, theirs), system},
        // Protected names are the user's own and refused with the protection reason.
        {"protected, the user's", quit, groupOf("WindowServer", Kind::process, none, mine), protection},
        {"protected app", relaunch,
         groupOf("ControlCenter", Kind::app, "/System/Library/CoreServices/ControlCenter.app", mine), protection},
        {"lower case is another name", quit, groupOf("windowserver", Kind::process, none, mine), allowed},
        // Quit and force quit are allowed on the user's plain processes, relaunch only on apps.
        {"quit a process", quit, groupOf("node", Kind::process, none, mine), allowed},
        {"force quit a process", force, groupOf("node", Kind::process, none, mine), allowed},
        {"relaunch a process", relaunch, groupOf("node", Kind::process, none, mine), onlyApps},
        {"relaunch an app", relaunch, groupOf("Safari", Kind::app, safari, mine), allowed}};
    // clang-format on
    for (const auto& test : cases) {
        const auto decision = ProcessActionPolicy::decide(test.action, test.group, ownPID);
        const Decision expected = test.refusal ? Decision{false, test.refusal} : Decision{true, std::nullopt};
        EXPECT_EQ(decision, expected) << test.title << ": " << decision.reason.value_or("allowed");
    }
}

TEST(ProcessActionPolicy, ProtectsExactlyTheSystemsEssentialNames) {
    const auto& names = ProcessActionPolicy::protectedNames();
    EXPECT_EQ(names.size(), 23u);
    EXPECT_THAT(names, ::testing::IsSupersetOf({"kernel_task", "launchd", "ControlCenter", "NotificationCenter",
                                                "mds_stores", "runningboardd"}));
    EXPECT_FALSE(names.count("Finder"));
    EXPECT_FALSE(names.count("launchd "));
}

}  // namespace
}  // namespace corvel
