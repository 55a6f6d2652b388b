#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "space/AttributeListReply.h"

namespace corvel {
namespace {

namespace Reply = AttributeListReply;

// Builds a reply the way getattrlist packs it: length, returned set, then each returned
// attribute in order, every one padded to 4 bytes.
class ReplyBuilder {
public:
    ReplyBuilder(std::uint32_t common, std::uint32_t file, std::uint32_t extended, std::uint32_t volume = 0,
                 std::uint32_t directory = 0) {
        put(std::uint32_t{0});  // length, filled in by bytes()
        put(common | Reply::commonReturnedAttributes);
        put(volume);
        put(directory);
        put(file);
        put(extended);
    }

    template <class T>
    ReplyBuilder& put(T value) {
        const std::size_t offset = bytes_.size();
        bytes_.resize(offset + (sizeof value + 3) / 4 * 4);
        std::memcpy(bytes_.data() + offset, &value, sizeof value);
        return *this;
    }

    std::vector<std::byte> bytes(std::optional<std::uint32_t> claimedLength = std::nullopt) const {
        std::vector<std::byte> copy = bytes_;
        const std::uint32_t length = claimedLength.value_or(static_cast<std::uint32_t>(copy.size()));
        std::memcpy(copy.data(), &length, sizeof length);
        copy.resize(Reply::bufferBytes);  // the caller's buffer is larger than the reply
        return copy;
    }

private:
    std::vector<std::byte> bytes_;
};

ReplyBuilder fullReply() {
    ReplyBuilder reply(Reply::commonDeviceID | Reply::commonModificationTime | Reply::commonFileID,
                       Reply::fileLinkCount | Reply::fileTotalSize | Reply::fileAllocatedSize,
                       Reply::extendedPrivateSize);
    reply.put(std::int32_t{16777231})
        .put(std::int64_t{1'700'000'000})
        .put(std::int64_t{123'456'789})
        .put(std::uint64_t{0x1122334455667788})
        .put(std::uint32_t{3})
        .put(std::int64_t{10'000})
        .put(std::int64_t{12'288})
        .put(std::int64_t{4'096});
    return reply;
}

// Attributes not returned take no space and keep their defaults: in a folder's reply (no file
// group, no private size) the file id must still be found right after the device id.
TEST(AttributeListReplyDecode, ReadsEveryReturnedAttributeInOrder) {
    ReplyBuilder folder(Reply::commonDeviceID | Reply::commonFileID, 0, 0);
    folder.put(std::int32_t{7}).put(std::uint64_t{42});
    ReplyBuilder withoutPrivateSize(Reply::commonFileID, Reply::fileTotalSize | Reply::fileAllocatedSize, 0);
    withoutPrivateSize.put(std::uint64_t{9}).put(std::int64_t{100}).put(std::int64_t{4096});
    const std::pair<ReplyBuilder, FileSizeFacts> cases[] = {
        {fullReply(), {16777231, 0x1122334455667788u, 3, fileTime(1'700'000'000, 123'456'789), 10'000, 12'288, 4'096}},
        {folder, {7, 42, 1, std::nullopt, 0, 0, std::nullopt}},
        {withoutPrivateSize, {0, 9, 1, std::nullopt, 100, 4096, std::nullopt}},
    };
    for (const auto& [reply, expected] : cases) EXPECT_EQ(Reply::decode(reply.bytes()), expected);
}

TEST(AttributeListReplyDecode, RejectsRepliesShorterThanTheyClaim) {
    const ReplyBuilder reply = fullReply();
    const std::size_t fullLength = 24 + 4 + 16 + 8 + 4 + 8 + 8 + 8;
    EXPECT_TRUE(Reply::decode(reply.bytes(static_cast<std::uint32_t>(fullLength))));
    EXPECT_FALSE(Reply::decode(reply.bytes(static_cast<std::uint32_t>(fullLength - 4))));
    EXPECT_FALSE(Reply::decode(reply.bytes(20)));
    const auto whole = reply.bytes();
    EXPECT_FALSE(Reply::decode(std::span<const std::byte>(whole).first(fullLength - 1)));
    EXPECT_FALSE(Reply::decode(std::span<const std::byte>(whole).first(10)));
}

TEST(AttributeListReplyDecode, RejectsAttributesThatWereNeverAskedFor) {
    // ATTR_CMN_NAME would come with a variable-length reference we cannot size.
    ReplyBuilder unexpectedCommon(0x00000001, 0, 0);
    EXPECT_FALSE(Reply::decode(unexpectedCommon.bytes()));
    ReplyBuilder unexpectedVolume(0, 0, 0, 0x1);
    EXPECT_FALSE(Reply::decode(unexpectedVolume.bytes()));
    ReplyBuilder unexpectedExtended(0, 0, 0x10);
    EXPECT_FALSE(Reply::decode(unexpectedExtended.bytes()));
}

TEST(AttributeListReplyDecode, ExtremeTimestampsAreClampedToTheYearsDatesCanShow) {
    // Found by fuzzing: seconds near the 64-bit limits overflowed the conversion to microseconds.
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    const struct {
        std::int64_t seconds, nanoseconds;
        const char* expected;
    } cases[] = {
        {most, most, "9999-12-31T23:59:59.999Z"},
        {least, least, "0001-01-01T00:00:00Z"},
        {1'700'000'000, -5, "2023-11-14T22:13:20Z"},
        {0, 1'500'000'000, "1970-01-01T00:00:00.999Z"},
    };
    for (const auto& item : cases) {
        ReplyBuilder reply(Reply::commonModificationTime, 0, 0);
        reply.put(item.seconds).put(item.nanoseconds);
        const auto facts = Reply::decode(reply.bytes());
        ASSERT_TRUE(facts && facts->modified) << item.seconds;
        EXPECT_EQ(ISO8601::format(*facts->modified), item.expected) << item.seconds;
    }
}

}  // namespace
}  // namespace corvel
