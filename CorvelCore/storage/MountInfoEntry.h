// One line of /proc/self/mountinfo, decoded: which device is mounted where, how, and as what.
//
//   36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 - ext3 /dev/root rw,errors=continue
//   (1)(2)(3)   (4)   (5)        (6)       (7)       (8) (9)  (10)      (11)
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/Json.h"

namespace corvel {

struct MountInfoEntry {
    int mountID = 0;
    int parentID = 0;
    std::string majorMinor;           // "8:2"; anonymous devices ("0:45") for network and btrfs
    std::string root;                 // the directory of the file system mounted here ("/" for all of it)
    std::string mountPoint;           // escapes (\040 for a space) already undone
    std::vector<std::string> mountOptions;
    std::string fileSystemType;       // "ext4", "nfs4", "fuse.sshfs"
    std::string source;               // "/dev/nvme0n1p2", "server:/export"
    std::vector<std::string> superOptions;

    bool operator==(const MountInfoEntry&) const = default;

    // Mounted read-only, by the mount's own flags or the file system's.
    bool isReadOnly() const;

    // One line; absent when it is not a well-formed mountinfo line.
    static std::optional<MountInfoEntry> parseLine(std::string_view line);
    // Every well-formed line of a mountinfo text, in order; the others are counted in `skipped`.
    static std::vector<MountInfoEntry> parse(std::string_view text, int* skipped = nullptr);
    // Undoes the kernel's octal escapes (\040 space, \011 tab, \012 newline, \134 backslash).
    static std::string unescape(std::string_view field);
};

CORVEL_JSON_RECORD(MountInfoEntry, mountID, parentID, majorMinor, root, mountPoint, mountOptions, fileSystemType, source, superOptions)

}  // namespace corvel
