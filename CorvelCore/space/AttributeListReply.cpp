#include "space/AttributeListReply.h"

#include <algorithm>
#include <cstring>

namespace corvel::AttributeListReply {

namespace {

// Reads the attributes in order and remembers whether the reply ran short.
class Cursor {
public:
    explicit Cursor(std::span<const std::byte> bytes) : bytes_(bytes) {}

    template <class T>
    T next() {
        T value{};
        if (bytes_.size() - offset_ < sizeof value) {
            truncated_ = true;
            return value;
        }
        std::memcpy(&value, bytes_.data() + offset_, sizeof value);
        offset_ += (sizeof value + 3) / 4 * 4;
        return value;
    }

    bool truncated() const { return truncated_; }

private:
    std::span<const std::byte> bytes_;
    std::size_t offset_ = 0;
    bool truncated_ = false;
};

}  // namespace

std::optional<FileSizeFacts> decode(std::span<const std::byte> reply) {
    constexpr std::size_t headerSize = sizeof(std::uint32_t) * 6;
    if (reply.size() < headerSize) return std::nullopt;
    std::uint32_t length = 0;
    std::memcpy(&length, reply.data(), sizeof length);
    if (length < headerSize) return std::nullopt;

    Cursor cursor(reply.first(std::min<std::size_t>(length, reply.size())));
    cursor.next<std::uint32_t>();
    const auto common = cursor.next<std::uint32_t>();
    const auto volume = cursor.next<std::uint32_t>();
    const auto directory = cursor.next<std::uint32_t>();
    const auto file = cursor.next<std::uint32_t>();
    const auto extended = cursor.next<std::uint32_t>();
    if ((common & ~requestedCommon) != 0 || volume != 0 || directory != 0 || (file & ~requestedFile) != 0 ||
        (extended & ~requestedExtended) != 0)
        return std::nullopt;

    FileSizeFacts facts;
    if (common & commonDeviceID) facts.device = cursor.next<std::int32_t>();
    if (common & commonModificationTime) {
        const auto seconds = cursor.next<std::int64_t>();
        const auto nanoseconds = cursor.next<std::int64_t>();
        facts.modified = fileTime(seconds, nanoseconds);
    }
    if (common & commonFileID) facts.fileID = cursor.next<std::uint64_t>();
    if (file & fileLinkCount) facts.linkCount = cursor.next<std::uint32_t>();
    if (file & fileTotalSize) facts.logicalBytes = cursor.next<std::int64_t>();
    if (file & fileAllocatedSize) facts.allocatedBytes = cursor.next<std::int64_t>();
    if (extended & extendedPrivateSize) facts.exclusiveBytes = cursor.next<std::int64_t>();
    if (cursor.truncated()) return std::nullopt;
    return facts;
}

}  // namespace corvel::AttributeListReply
