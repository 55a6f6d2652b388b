// The selected object as the system sees it now, for the preflight's identity check: the disk
// tool's `info` on macOS, lsblk's listing on Linux. The selection may be minutes old; a stick
// swapped for another in the meantime must not be unmounted by mistake.
//
//   DiskIdentity fresh = DiskIdentity::read(Platform::macos, runner, "disk4s1");   // throws when gone
#pragma once

#include "command/CommandRunning.h"
#include "common/Platform.h"
#include "storage/BlockDevice.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

// The identifier names nothing the system knows of any more.
class DiskIdentityMissing : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct DiskIdentity {
    std::optional<std::string> volumeUUID;
    std::vector<std::string> mountPoints;  // one on macOS; Linux may mount a device several times

    bool operator==(const DiskIdentity&) const = default;

    // `diskutil info -plist` output; throws the parser's errors for an unreadable document.
    static DiskIdentity fromDiskutilInfo(std::string_view plist);
    // The device named `identifier` (kernel name, lsblk name or /dev path) in lsblk's trees.
    static std::optional<DiskIdentity> fromBlockDevices(const std::vector<BlockDevice>& devices,
                                                        const std::string& identifier);

    // Runs the platform's tool through its read-only policy. Throws CommandError, the parsers'
    // errors, or DiskIdentityMissing.
    static DiskIdentity read(Platform platform, CommandRunning& runner, const std::string& identifier);
};

}  // namespace corvel
