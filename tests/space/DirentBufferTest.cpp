// getdents64 replies decoded from hand-built buffers.
#include "space/DirentBuffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <dirent.h>
#include <string>
#include <vector>

namespace corvel {
namespace {

using DirectoryReader::EntryType;

void appendRecord(std::vector<std::byte>& buffer, const std::string& name, unsigned char type) {
    const std::size_t length = (DirentBuffer::nameOffset + name.size() + 1 + 7) / 8 * 8;
    const std::size_t start = buffer.size();
    buffer.resize(start + length);
    const std::uint64_t inode = 42;
    const auto recordLength = static_cast<std::uint16_t>(length);
    std::memcpy(buffer.data() + start, &inode, sizeof inode);
    std::memcpy(buffer.data() + start + 16, &recordLength, sizeof recordLength);
    buffer[start + 18] = static_cast<std::byte>(type);
    std::memcpy(buffer.data() + start + DirentBuffer::nameOffset, name.data(), name.size());
}

TEST(DirentBuffer, DecodesNamesAndTypesAndSkipsDotEntries) {
    std::vector<std::byte> buffer;
    appendRecord(buffer, ".", DT_DIR);
    appendRecord(buffer, "..", DT_DIR);
    appendRecord(buffer, "src", DT_DIR);
    appendRecord(buffer, "main.cpp", DT_REG);
    appendRecord(buffer, "link", DT_LNK);
    appendRecord(buffer, "unknown-type", DT_UNKNOWN);
    appendRecord(buffer, "..hidden", DT_REG);
    std::vector<ScanDirectoryAccess::Entry> entries;
    ASSERT_TRUE(DirentBuffer::decode(buffer, entries));
    ASSERT_EQ(entries.size(), 5u);
    EXPECT_EQ(std::string(entries[0].name, entries[0].length), "src");
    EXPECT_EQ(entries[0].type, EntryType::directory);
    EXPECT_EQ(std::string(entries[1].name), "main.cpp");  // NUL-terminated in place
    EXPECT_EQ(entries[1].type, EntryType::regular);
    EXPECT_EQ(entries[2].type, EntryType::symlink);
    EXPECT_EQ(entries[3].type, EntryType::other);
    EXPECT_EQ(std::string(entries[4].name, entries[4].length), "..hidden");
}

TEST(DirentBuffer, RejectsRecordsThatRunPastTheBufferOrLackATerminator) {
    std::vector<std::byte> buffer;
    appendRecord(buffer, "file", DT_REG);
    std::vector<ScanDirectoryAccess::Entry> entries;

    auto truncated = buffer;
    truncated.resize(truncated.size() - 4);
    EXPECT_FALSE(DirentBuffer::decode(truncated, entries));

    auto tooShort = buffer;
    const std::uint16_t bogusLength = 8;
    std::memcpy(tooShort.data() + 16, &bogusLength, sizeof bogusLength);
    EXPECT_FALSE(DirentBuffer::decode(tooShort, entries));

    auto unterminated = buffer;
    for (std::size_t i = DirentBuffer::nameOffset; i < unterminated.size(); ++i) unterminated[i] = std::byte{'a'};
    EXPECT_FALSE(DirentBuffer::decode(unterminated, entries));

    std::vector<std::byte> empty;
    entries.clear();
    EXPECT_TRUE(DirentBuffer::decode(empty, entries));
    EXPECT_TRUE(entries.empty());
}

}  // namespace
}  // namespace corvel
