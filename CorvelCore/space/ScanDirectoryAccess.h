// The handful of system calls the space scanner's walk is made of, relative to open directory
// handles: open a child folder from its parent's handle, list a batch of entries with their
// types, and one metadata call per entry. Keeping the walk on handles instead of path strings
// spares the kernel a path lookup per file and the scanner a string per file.
//
// One implementation per platform (platform/linux: getdents64 and fstatat; platform/macos:
// getattrlistbulk, which answers the metadata in the same call), with what both answer the same way in platform/posix.
// Nothing here throws; failures come back as the system's error number, which `isAccessDenied` and `isVanished` sort.
//
//   int error = 0;
//   int fd = ScanDirectoryAccess::openDirectory("/home/me", error);
//   std::vector<ScanDirectoryAccess::Entry> batch;
//   while (ScanDirectoryAccess::readBatch(fd, buffer, batch, error) && !batch.empty()) { ... }
#pragma once

#include "space/DirectoryReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace corvel::ScanDirectoryAccess {

// What one metadata call tells about an entry (never following a final symbolic link).
struct Status {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t linkCount = 1;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::int64_t modifiedNanoseconds = 0;  // since 1970
    DirectoryReader::EntryType type = DirectoryReader::EntryType::other;
    // The mount the entry lies on, filled by `status` of a handle: a bind mount of a folder of the
    // same device differs here (Linux mount ID; on macOS, without bind mounts, the device).
    std::uint64_t mountID = 0;
    // What the file system reports as the file's own (clone-private) bytes, -1 when it does not.
    std::int64_t exclusiveBytes = -1;
};

// One directory entry as listed: the name points into the caller's buffer, NUL-terminated, and
// stays valid until the next readBatch with that buffer.
struct Entry {
    const char* name = nullptr;
    std::uint16_t length = 0;
    DirectoryReader::EntryType type = DirectoryReader::EntryType::other;
    // Filled where the listing call reports the metadata too (macOS), sparing a call per entry.
    std::optional<Status> status;
};

// What the extents of a file on a file system that can share blocks say.
struct CloneFacts {
    std::int64_t exclusiveBytes = 0;
    std::int64_t firstPhysicalOffset = -1;  // -1 when the file has no placed extent
};

// A handle (file descriptor) on a directory, or -1 with `error` set. openDirectory follows a
// final symbolic link (the root is what the person named); openDirectoryAt never does.
int openDirectory(const std::string& path, int& error);
int openDirectoryAt(int directory, const char* name, int& error);
void close(int handle);

// The next batch of entries ("." and ".." left out) into `entries` (cleared first). Returns
// false with `error` set on failure; an empty batch means the listing is complete.
bool readBatch(int directory, std::span<std::byte> buffer, std::vector<Entry>& entries, int& error);

bool status(int handle, Status& out, int& error);
bool statusAt(int directory, const char* name, Status& out, int& error);
// The status of what a path names, following a final symbolic link (a root as a person named it).
bool statusOfTarget(const std::string& path, Status& out, int& error);

// The file system's magic number (statfs f_type), 0 when unknown.
std::uint64_t fileSystemMagic(int handle);

// Extent facts of a regular file; absent when it cannot be opened or mapped.
std::optional<CloneFacts> cloneFactsAt(int directory, const char* name, std::int64_t logicalBytes);

// The identity of a path without following a final symbolic link, for paths the walk must skip.
std::optional<Status> statusOfPath(const std::string& path);

// Seconds and nanoseconds as one count, clamped where the product would overflow: a file system
// (or a reply decoded from its bytes) can report any time a file was given.
inline std::int64_t nanosecondsSince1970(std::int64_t seconds, std::int64_t nanoseconds) {
    constexpr std::int64_t limit = INT64_MAX / 1'000'000'000 - 1;
    if (seconds > limit) return INT64_MAX;
    if (seconds < -limit) return INT64_MIN;
    return seconds * 1'000'000'000 + nanoseconds % 1'000'000'000;
}

bool isAccessDenied(int error);
// The entry went away or changed type between listing and opening it: not a failure to report.
bool isVanished(int error);
std::string errorText(int error);

// Lets this process keep more folders open at once; the parallel walk holds one handle per
// folder whose subfolders are still waiting.
void raiseOpenFileLimit();

}  // namespace corvel::ScanDirectoryAccess
