#include "processes/ProcessActionPolicy.h"

#include <algorithm>

namespace corvel::ProcessActionPolicy {

const std::set<std::string>& protectedNames() {
    static const std::set<std::string> names{
        "kernel_task",     "launchd",       "WindowServer",       "loginwindow", "SystemUIServer",
        "coreaudiod",      "logd",          "opendirectoryd",     "cfprefsd",    "distnoted",
        "UserEventAgent",  "mds",           "mds_stores",         "securityd",   "trustd",
        "powerd",          "configd",       "syspolicyd",         "tccd",        "runningboardd",
        "launchservicesd", "ControlCenter", "NotificationCenter",
    };
    return names;
}

Decision decide(ProcessAction action, const ProcessGroup& group, std::int32_t ownPID) {
    if (std::find(group.pids.begin(), group.pids.end(), ownPID) != group.pids.end())
        return {false, "This is Velmora itself."};
    if (!group.isCurrentUser || (group.kind == ProcessGroup::Kind::system && !group.appPath))
        return {false, "System process \u2014 macOS manages it."};
    if (protectedNames().count(group.name)) return {false, "Protected: stopping it would disrupt macOS."};
    if (action == ProcessAction::quit || action == ProcessAction::forceQuit) return {true, std::nullopt};
    if (group.appPath) return {true, std::nullopt};
    return {false, "Only apps can be relaunched."};
}

}  // namespace corvel::ProcessActionPolicy
