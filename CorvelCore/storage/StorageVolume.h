// One mounted file system, as discovery joins the file system's view with the disk tool's.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct StorageVolume {
    std::string id;  // unique within one snapshot: volume UUID, else mount path
    std::string name;
    std::string mountPoint;
    std::optional<std::string> bsdName;
    std::optional<std::string> fileSystemType;  // short, lower case ("apfs", "ext4")
    std::optional<std::string> fileSystemName;  // descriptive ("APFS", "ExFAT")
    std::int64_t totalBytes = 0;
    std::int64_t availableBytes = 0;
    // Blocks only root may use (Linux file systems keep some back): free but not available. They
    // count neither as used nor as room, as df counts them.
    std::optional<std::int64_t> reservedBytes;
    bool isInternal = false;
    bool isEjectable = false;
    bool isReadOnly = false;
    bool isNetwork = false;
    bool isBootVolume = false;
    std::optional<bool> isEncrypted;
    std::optional<bool> ownershipEnabled;
    std::optional<bool> supportsCaseSensitiveNames;
    std::optional<std::string> busProtocol;
    std::optional<std::string> containerID;
    std::optional<std::string> physicalDiskID;

    // total − available − reserved, never below 0 (purgeable space can make available exceed total).
    std::int64_t usedBytes() const;
    // used / (used + available): the share of the space a user can have that is taken.
    double usedFraction() const;
    // 0 for a volume of unknown size: it must not look as if it had room to spare.
    double freeFraction() const;
    // The descriptive name, else the short type in upper case, else "Unknown".
    std::string fileSystemLabel() const;

    bool operator==(const StorageVolume&) const = default;
};

CORVEL_JSON_RECORD(StorageVolume, id, name, mountPoint, bsdName, fileSystemType, fileSystemName, totalBytes, availableBytes, reservedBytes, isInternal, isEjectable, isReadOnly, isNetwork, isBootVolume, isEncrypted, ownershipEnabled, supportsCaseSensitiveNames, busProtocol, containerID, physicalDiskID)

}  // namespace corvel
