// FileAttributes on macOS: getattrlist (with the clone-private size) for the size facts and
// fcntl(F_LOG2PHYS_EXT) for extents, both relative to an open folder (getattrlistat, openat).
// Only the system calls live here; AttributeListReply decodes the reply. Written against
// <sys/attr.h> and <sys/fcntl.h> as documented.
#include <fcntl.h>
#include <sys/attr.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

#include "common/CheckedArithmetic.h"
#include "space/AttributeListReply.h"
#include "space/FileAttributes.h"

namespace corvel {

namespace {

static_assert(AttributeListReply::commonReturnedAttributes == ATTR_CMN_RETURNED_ATTRS);
static_assert(AttributeListReply::commonDeviceID == ATTR_CMN_DEVID);
static_assert(AttributeListReply::commonModificationTime == ATTR_CMN_MODTIME);
static_assert(AttributeListReply::commonFileID == ATTR_CMN_FILEID);
static_assert(AttributeListReply::fileLinkCount == ATTR_FILE_LINKCOUNT);
static_assert(AttributeListReply::fileTotalSize == ATTR_FILE_TOTALSIZE);
static_assert(AttributeListReply::fileAllocatedSize == ATTR_FILE_ALLOCSIZE);
static_assert(AttributeListReply::extendedPrivateSize == ATTR_CMNEXT_PRIVATESIZE);
static_assert(sizeof(struct timespec) == 16 && sizeof(dev_t) == 4 && sizeof(off_t) == 8);

DirectoryReader::EntryType typeOf(mode_t mode) {
    if (S_ISDIR(mode)) return DirectoryReader::EntryType::directory;
    if (S_ISREG(mode)) return DirectoryReader::EntryType::regular;
    if (S_ISLNK(mode)) return DirectoryReader::EntryType::symlink;
    return DirectoryReader::EntryType::other;
}

}  // namespace

std::optional<FileSizeFacts> FileAttributes::factsAt(int directory, const std::string& name, int& error) {
    struct attrlist request {};
    request.bitmapcount = ATTR_BIT_MAP_COUNT;
    request.commonattr = AttributeListReply::requestedCommon;
    request.fileattr = AttributeListReply::requestedFile;
    // With FSOPT_ATTR_CMN_EXTENDED the fork group carries the extended common attributes.
    request.forkattr = AttributeListReply::requestedExtended;
    alignas(8) std::array<std::byte, AttributeListReply::bufferBytes> reply{};
    if (getattrlistat(directory, name.c_str(), &request, reply.data(), reply.size(),
                      FSOPT_NOFOLLOW | FSOPT_ATTR_CMN_EXTENDED) != 0) {
        error = errno;
        return std::nullopt;
    }
    auto facts = AttributeListReply::decode(reply);
    if (!facts) error = EIO;
    return facts;
}

std::optional<std::vector<ExtentRange>> FileAttributes::physicalExtentsAt(int directory, const std::string& name,
                                                                          std::int64_t logicalSize, int& error) {
    if (logicalSize < 1) return std::vector<ExtentRange>{};
    const int fd = openat(directory, name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        error = errno;
        return std::nullopt;
    }
    std::vector<ExtentRange> ranges;
    std::int64_t offset = 0;
    while (offset < logicalSize) {
        struct log2phys mapping {};
        mapping.l2p_contigbytes = logicalSize - offset;  // in: how far to map
        mapping.l2p_devoffset = offset;                  // in: the file offset
        if (fcntl(fd, F_LOG2PHYS_EXT, &mapping) == -1) {
            if (ranges.empty()) {
                error = errno;
                close(fd);
                return std::nullopt;
            }
            break;
        }
        // A reply no file can have ends the mapping rather than the process.
        if (mapping.l2p_contigbytes < 1 || mapping.l2p_devoffset < 0 ||
            mapping.l2p_contigbytes > INT64_MAX - mapping.l2p_devoffset)
            break;
        ranges.push_back({mapping.l2p_devoffset, mapping.l2p_devoffset + mapping.l2p_contigbytes - 1});
        offset = checkedAdd(offset, std::min<std::int64_t>(mapping.l2p_contigbytes, logicalSize - offset));
    }
    close(fd);
    return ranges;
}

std::optional<FileSizeFacts> FileAttributes::facts(const std::string& path) {
    int ignored = 0;
    return factsAt(AT_FDCWD, path, ignored);
}

std::optional<std::vector<ExtentRange>> FileAttributes::physicalExtents(const std::string& path,
                                                                        std::int64_t logicalSize) {
    int ignored = 0;
    return physicalExtentsAt(AT_FDCWD, path, logicalSize, ignored);
}

std::optional<PathStatus> FileAttributes::status(const std::string& path) {
    struct stat result {};
    if (lstat(path.c_str(), &result) != 0) return std::nullopt;
    // No bind mounts here: the device tells mounts apart.
    return PathStatus{typeOf(result.st_mode), static_cast<std::uint64_t>(result.st_dev),
                      checkedMultiply(static_cast<std::int64_t>(result.st_blocks), 512),
                      static_cast<std::uint64_t>(result.st_dev)};
}

}  // namespace corvel
