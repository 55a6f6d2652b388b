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
    const Case cases[] = {
        // Our own process is refused before anything else, even where every other rule allows.
        {"own app", ProcessAction::quit, groupOf("Velmora", Kind::app, "/Applications/Velmora.app", true, {99, ownPID}),
         self},
        {"own process of another user's kind", ProcessAction::forceQuit,
         groupOf("launchd", Kind::system, std::nullopt, false, {ownPID}), self},
        // Rule 2: a system group passes only with an app path.
        {"system app of the user", ProcessAction::quit, groupOf("Helper", Kind::system, safari, true), std::nullopt},
        {"system app relaunch", ProcessAction::relaunch, groupOf("Helper", Kind::system, safari, true), std::nullopt},
        {"system process of the user", ProcessAction::quit, groupOf("Helper", Kind::system, std::nullopt, true),
         system},
        // Another user's group is the system's, whatever its name or kind.
        {"other user's app", ProcessAction::quit, groupOf("Safari", Kind::app, safari, false), system},
        {"other user's plain process", ProcessAction::relaunch, groupOf("sleep", Kind::process, std::nullopt, false),
         system},
        {"other user's protected name", ProcessAction::quit,
         groupOf("WindowServer", Kind::process, std::nullopt, false), system},
        // Protected names are the user's own and refused with the protection reason.
        {"protected, the user's", ProcessAction::quit, groupOf("WindowServer", Kind::process, std::nullopt, true),
         protection},
        {"protected app", ProcessAction::relaunch,
         groupOf("ControlCenter", Kind::app, "/System/Library/CoreServices/ControlCenter.app", true), protection},
        {"lower case is another name", ProcessAction::quit, groupOf("windowserver", Kind::process, std::nullopt, true),
         std::nullopt},
        // Quit and force quit are allowed on the user's plain processes, relaunch only on apps.
        {"quit a process", ProcessAction::quit, groupOf("node", Kind::process, std::nullopt, true), std::nullopt},
        {"force quit a process", ProcessAction::forceQuit, groupOf("node", Kind::process, std::nullopt, true),
         std::nullopt},
        {"relaunch a process", ProcessAction::relaunch, groupOf("node", Kind::process, std::nullopt, true), onlyApps},
        {"relaunch an app", ProcessAction::relaunch, groupOf("Safari", Kind::app, safari, true), std::nullopt},
    };
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

TEST(ProcessActionPolicy, DecisionJsonOmitsTheReasonWhenAllowed) {
    EXPECT_EQ(Json(Decision{true, std::nullopt}).dump(), R"({"allowed":true})");
    EXPECT_EQ(Json(Decision{false, onlyApps}).dump(), R"({"allowed":false,"reason":"Only apps can be relaunched."})");
}

}  // namespace
}  // namespace corvel
