// Runs the btrfs tool for an account, fenced by its own read-only policy: the snapshot list,
// how much of each snapshot no other file shares, and how the chunks are used. Nothing that
// creates, deletes or changes a subvolume can pass the policy.
//
//   BtrfsClient btrfs{machine.runner(ToolTimeout::inventory)};
//   auto snapshots = BtrfsParser::parseSubvolumeList(btrfs.listSnapshots("/"));
#pragma once

#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"

#include <string>
#include <vector>

namespace corvel {

struct BtrfsClient {
    static constexpr const char* executable = "/usr/bin/btrfs";
    static const CommandPolicy& policy();

    CommandRunning& runner;

    std::string listSnapshots(const std::string& mountPoint) const;  // btrfs subvolume list -s MOUNT
    // btrfs filesystem du -s --raw PATH…: one line per path, in bytes.
    std::string usage(const std::vector<std::string>& paths) const;
    std::string chunkUsage(const std::string& mountPoint) const;  // btrfs filesystem df -b MOUNT
};

}  // namespace corvel
