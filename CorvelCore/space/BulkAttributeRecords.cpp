#include "space/BulkAttributeRecords.h"

#include <cstring>
#include <limits>

namespace corvel::BulkAttributeRecords {

namespace {

constexpr std::size_t headerBytes = sizeof(std::uint32_t) * 6;

// Reads a record's attributes in order, each padded to 4 bytes, and remembers running short.
class Cursor {
public:
    explicit Cursor(std::span<const std::byte> record) : record_(record), offset_(headerBytes) {}

    template <class T>
    T next() {
        T value{};
        if (record_.size() - offset_ < sizeof value) {
            truncated_ = true;
            return value;
        }
        std::memcpy(&value, record_.data() + offset_, sizeof value);
        offset_ += (sizeof value + 3) / 4 * 4;
        return value;
    }

    std::size_t offset() const { return offset_; }
    bool truncated() const { return truncated_; }

private:
    std::span<const std::byte> record_;
    std::size_t offset_;
    bool truncated_ = false;
};

DirectoryReader::EntryType entryType(std::uint32_t objectType) {
    if (objectType == typeDirectory) return DirectoryReader::EntryType::directory;
    if (objectType == typeRegular) return DirectoryReader::EntryType::regular;
    if (objectType == typeSymlink) return DirectoryReader::EntryType::symlink;
    return DirectoryReader::EntryType::other;
}

bool has(std::uint32_t set, std::uint32_t bits) {
    return (set & bits) == bits;
}

// One record, already cut to its own length.
bool decodeRecord(std::span<const std::byte> record, ScanDirectoryAccess::Entry& entry) {
    std::uint32_t sets[5] = {};
    std::memcpy(sets, record.data() + sizeof(std::uint32_t), sizeof sets);
    const auto [common, volume, directory, file, fork] = sets;
    if ((common & ~requestedCommon) != 0 || volume != 0 || directory != 0 || (file & ~requestedFile) != 0 || fork != 0)
        return false;

    Cursor cursor(record);
    const std::uint32_t error = (common & commonError) ? cursor.next<std::uint32_t>() : 0;
    if (common & commonName) {
        const std::size_t referenceAt = cursor.offset();
        const auto offset = cursor.next<std::int32_t>();
        const auto length = cursor.next<std::uint32_t>();
        // The name must lie inside this record and end with its NUL there.
        const auto start = static_cast<std::int64_t>(referenceAt) + offset;
        if (cursor.truncated() || length == 0 || length > std::numeric_limits<std::uint16_t>::max() + 1u ||
            start < static_cast<std::int64_t>(headerBytes) ||
            start + static_cast<std::int64_t>(length) > static_cast<std::int64_t>(record.size()) ||
            record[static_cast<std::size_t>(start + length - 1)] != std::byte{0})
            return false;
        entry.name = reinterpret_cast<const char*>(record.data() + start);
        entry.length = static_cast<std::uint16_t>(std::strlen(entry.name));
    }
    ScanDirectoryAccess::Status status;
    if (common & commonDeviceID) status.device = static_cast<std::uint32_t>(cursor.next<std::int32_t>());
    if (common & commonObjectType) entry.type = status.type = entryType(cursor.next<std::uint32_t>());
    if (common & commonModificationTime) {
        const auto seconds = cursor.next<std::int64_t>();
        const auto nanoseconds = cursor.next<std::int64_t>();
        status.modifiedNanoseconds = ScanDirectoryAccess::nanosecondsSince1970(seconds, nanoseconds);
    }
    if (common & commonFileID) status.inode = cursor.next<std::uint64_t>();
    if (file & fileLinkCount) status.linkCount = cursor.next<std::uint32_t>();
    if (file & fileTotalSize) status.logicalBytes = cursor.next<std::int64_t>();
    if (file & fileAllocatedSize) status.allocatedBytes = cursor.next<std::int64_t>();
    if (cursor.truncated()) return false;

    status.mountID = status.device;  // no bind mounts here: the device tells mounts apart
    constexpr std::uint32_t identity = commonDeviceID | commonObjectType | commonModificationTime | commonFileID;
    // A folder has no file attributes to return; anything else without its sizes is asked again.
    const bool complete = error == 0 && has(common, identity) &&
                          (status.type == DirectoryReader::EntryType::directory || has(file, requestedFile));
    if (complete) entry.status = status;
    return true;
}

}  // namespace

bool decode(std::span<const std::byte> buffer, int count, std::vector<ScanDirectoryAccess::Entry>& entries) {
    std::size_t offset = 0;
    for (int i = 0; i < count; ++i) {
        if (buffer.size() - offset < headerBytes) return false;
        std::uint32_t length = 0;
        std::memcpy(&length, buffer.data() + offset, sizeof length);
        if (length < headerBytes || length > buffer.size() - offset) return false;
        ScanDirectoryAccess::Entry entry;
        if (!decodeRecord(buffer.subspan(offset, length), entry)) return false;
        if (entry.name && entry.length > 0) entries.push_back(entry);
        offset += length;
    }
    return true;
}

}  // namespace corvel::BulkAttributeRecords
