// Lists a Mac's local snapshots, fenced by read-only policies of its own: the disk tool may only
// list a volume's APFS snapshots, Time Machine may only list its local ones. Nothing that creates,
// deletes, thins or mounts a snapshot can pass either policy.
//
//   LocalSnapshotClient client{machine.runner(ToolTimeout::inventory)};
//   auto snapshots = SnapshotListParser::parseAPFS(client.listAPFS("disk3s5"));
//   auto named = SnapshotListParser::parseTimeMachine(client.listTimeMachine());
#pragma once

#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"

#include <string>

namespace corvel {

struct LocalSnapshotClient {
    static constexpr const char* diskutil = "/usr/sbin/diskutil";
    static constexpr const char* tmutil = "/usr/bin/tmutil";
    static const CommandPolicy& apfsPolicy();
    static const CommandPolicy& timeMachinePolicy();

    CommandRunning& runner;

    // diskutil apfs listSnapshots -plist VOLUME (a device identifier such as "disk3s5").
    std::string listAPFS(const std::string& volume) const;
    // tmutil listlocalsnapshots /: the snapshots of the volume group the system booted from.
    std::string listTimeMachine() const;
};

}  // namespace corvel
