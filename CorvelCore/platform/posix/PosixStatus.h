// The scanner's Status read out of a struct stat, shared by the Linux and macOS halves of
// ScanDirectoryAccess. `fill` is inline because statusAt runs it once per listed entry; the one
// field the two systems name differently, the modification time, each OS's half supplies.
//
//   struct stat st {};
//   if (::fstatat(directory, name, &st, AT_SYMLINK_NOFOLLOW) == 0) PosixStatus::fill(st, out);
#pragma once

#include "space/ScanDirectoryAccess.h"

#include <cstdint>
#include <sys/stat.h>
#include <time.h>

namespace corvel::PosixStatus {

// Defined once per OS: Linux calls the field st_mtim, macOS st_mtimespec.
const struct timespec& modifiedTime(const struct stat& st);

inline DirectoryReader::EntryType typeOf(mode_t mode) {
    if (S_ISDIR(mode)) return DirectoryReader::EntryType::directory;
    if (S_ISREG(mode)) return DirectoryReader::EntryType::regular;
    if (S_ISLNK(mode)) return DirectoryReader::EntryType::symlink;
    return DirectoryReader::EntryType::other;
}

inline void fill(const struct stat& st, ScanDirectoryAccess::Status& out) {
    const struct timespec& modified = modifiedTime(st);
    out.device = static_cast<std::uint64_t>(st.st_dev);
    out.inode = static_cast<std::uint64_t>(st.st_ino);
    out.linkCount = static_cast<std::uint64_t>(st.st_nlink);
    out.logicalBytes = static_cast<std::int64_t>(st.st_size);
    out.allocatedBytes = static_cast<std::int64_t>(st.st_blocks) * 512;  // st_blocks counts 512-byte units
    out.modifiedNanoseconds = ScanDirectoryAccess::nanosecondsSince1970(modified.tv_sec, modified.tv_nsec);
    out.type = typeOf(st.st_mode);
    out.mountID = out.device;  // where the system has no finer mount identity
}

}  // namespace corvel::PosixStatus
