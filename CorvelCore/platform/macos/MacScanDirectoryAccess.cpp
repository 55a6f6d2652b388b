// The space scanner's system calls on macOS: getattrlistbulk lists names and types of a batch of
// entries in one call on a handle opened relative to the parent folder, then fstatat per entry.
// Clone facts are not asked for here, so every allocated block counts as the file's own. Closing
// handles, the status of a handle or a path and sorting error numbers are shared with Linux in
// platform/posix/PosixScanDirectoryAccess.cpp.
#include "space/ScanDirectoryAccess.h"

#include "platform/posix/PosixStatus.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/attr.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vnode.h>
#include <unistd.h>

namespace corvel::PosixStatus {

// Darwin's struct stat names the modification time st_mtimespec.
const struct timespec& modifiedTime(const struct stat& st) { return st.st_mtimespec; }

}  // namespace corvel::PosixStatus

namespace corvel::ScanDirectoryAccess {
namespace {

constexpr int directoryFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

}  // namespace

int openDirectory(const std::string& path, int& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) error = errno;
    return fd;
}

int openDirectoryAt(int directory, const char* name, int& error) {
    const int fd = ::openat(directory, name, directoryFlags);
    if (fd < 0) error = errno;
    return fd;
}

bool readBatch(int directory, std::span<std::byte> buffer, std::vector<Entry>& entries, int& error) {
    entries.clear();
    struct attrlist request {};
    request.bitmapcount = ATTR_BIT_MAP_COUNT;
    request.commonattr = ATTR_CMN_RETURNED_ATTRS | ATTR_CMN_NAME | ATTR_CMN_OBJTYPE;
    for (;;) {
        const int count = ::getattrlistbulk(directory, &request, buffer.data(), buffer.size(), 0);
        if (count < 0) {
            if (errno == EINTR) continue;
            error = errno;
            return false;
        }
        if (count == 0) return true;
        // Each record: its length, the returned-attributes set, then the attributes that were
        // returned in bit order (the name as a reference to NUL-terminated bytes, the type).
        const std::byte* record = buffer.data();
        for (int i = 0; i < count; ++i) {
            std::uint32_t length = 0;
            std::memcpy(&length, record, sizeof length);
            const std::byte* field = record + sizeof length;
            attribute_set_t returned {};
            std::memcpy(&returned, field, sizeof returned);
            field += sizeof returned;
            const char* name = nullptr;
            std::uint32_t nameLength = 0;
            if (returned.commonattr & ATTR_CMN_NAME) {
                attrreference_t reference {};
                std::memcpy(&reference, field, sizeof reference);
                name = reinterpret_cast<const char*>(field) + reference.attr_dataoffset;
                nameLength = reference.attr_length > 0 ? reference.attr_length - 1 : 0;
                field += sizeof reference;
            }
            fsobj_type_t type = VNON;
            if (returned.commonattr & ATTR_CMN_OBJTYPE) std::memcpy(&type, field, sizeof type);
            auto entryType = DirectoryReader::EntryType::other;
            if (type == VDIR) entryType = DirectoryReader::EntryType::directory;
            if (type == VREG) entryType = DirectoryReader::EntryType::regular;
            if (type == VLNK) entryType = DirectoryReader::EntryType::symlink;
            if (name && nameLength > 0) entries.push_back({name, static_cast<std::uint16_t>(nameLength), entryType});
            record += length;
        }
        if (!entries.empty()) return true;
    }
}

bool status(int handle, Status& out, int& error) {
    struct stat st {};
    if (::fstat(handle, &st) != 0) {
        error = errno;
        return false;
    }
    PosixStatus::fill(st, out);  // no bind mounts: the device tells mounts apart
    return true;
}

bool statusAt(int directory, const char* name, Status& out, int& error) {
    struct stat st {};
    if (::fstatat(directory, name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
        error = errno;
        return false;
    }
    PosixStatus::fill(st, out);
    return true;
}

std::uint64_t fileSystemMagic(int) { return 0; }

std::optional<CloneFacts> cloneFactsAt(int, const char*, std::int64_t) { return std::nullopt; }

void raiseOpenFileLimit() {
    struct rlimit limit {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    const rlim_t wanted = limit.rlim_max == RLIM_INFINITY ? 10240 : limit.rlim_max;
    if (limit.rlim_cur < wanted) {
        limit.rlim_cur = wanted;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace corvel::ScanDirectoryAccess
