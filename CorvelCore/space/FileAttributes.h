// Per-file facts straight from the OS: one metadata call for the size facts, the physical
// extents of a file's data, and a plain lstat-like status. Implemented once per platform
// (platform/linux uses statx and FIEMAP, platform/macos getattrlist and F_LOG2PHYS_EXT); the
// replies are decoded by the pure FiemapReply and AttributeListReply.
//
// None of these follow a final symbolic link, and none throw: a failure is an absent value. The
// `At` forms name a file relative to an open folder handle, so that walkers never build a path
// the system would have to resolve again (or could not, past the longest path it accepts).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "space/DirectoryReader.h"
#include "space/ExtentUnion.h"
#include "space/FileSizeFacts.h"

namespace corvel {

// What a walker needs to know about an entry it did not get a type for, or must not leave the
// mount of.
struct PathStatus {
    DirectoryReader::EntryType type = DirectoryReader::EntryType::other;
    std::uint64_t device = 0;
    std::int64_t allocatedBytes = 0;
    // The mount the entry lies on: a bind mount of a folder of the same device still differs
    // here (Linux mount ID; macOS has no bind mounts, so the device number).
    std::uint64_t mountID = 0;

    bool operator==(const PathStatus&) const = default;
};

namespace FileAttributes {

// Size facts in one metadata call. `exclusiveBytes` is what the file system reports as private
// to the file; on Linux it equals the allocated size on file systems that cannot share blocks,
// and is the sum of the unshared extents on those that can.
std::optional<FileSizeFacts> facts(const std::string& path);

// The device ranges holding the file's data; empty when `logicalSize` is below 1; absent when
// the file cannot be opened or the very first extent query fails (a later failure keeps the
// ranges found so far).
std::optional<std::vector<ExtentRange>> physicalExtents(const std::string& path, std::int64_t logicalSize);

// lstat: type, device and allocated size of the path itself.
std::optional<PathStatus> status(const std::string& path);

// facts and physicalExtents for the entry `name` of the open folder `directory`; `error` gets
// the system's error number on failure.
std::optional<FileSizeFacts> factsAt(int directory, const std::string& name, int& error);
std::optional<std::vector<ExtentRange>> physicalExtentsAt(int directory, const std::string& name,
                                                          std::int64_t logicalSize, int& error);

}  // namespace FileAttributes
}  // namespace corvel
