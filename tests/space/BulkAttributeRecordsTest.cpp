#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <string>

#include "space/BulkAttributeRecords.h"

namespace corvel {
namespace {

namespace Bulk = BulkAttributeRecords;
using ::testing::ElementsAre;
using ::testing::Field;
using EntryType = DirectoryReader::EntryType;

// One record the way getattrlistbulk packs it: length, returned sets, the error first, then each
// attribute padded to 4 bytes, the name's bytes after the fixed part.
struct Record {
    std::string name = "report.pdf";
    std::uint32_t common = Bulk::requestedCommon;
    std::uint32_t file = Bulk::requestedFile;
    std::uint32_t volume = 0;
    std::uint32_t error = 0;
    std::uint32_t type = Bulk::typeRegular;
    std::int32_t nameOffsetShift = 0;  // moves the name reference off its bytes
    bool terminateName = true;
    std::optional<std::uint32_t> claimedLength;  // what the record says its length is

    std::vector<std::byte> bytes() const {
        std::vector<std::byte> out;
        const auto put = [&out](auto value) {
            const std::size_t at = out.size();
            out.resize(at + (sizeof value + 3) / 4 * 4);
            std::memcpy(out.data() + at, &value, sizeof value);
            return at;
        };
        put(std::uint32_t{0});
        put(common);
        put(volume);
        put(std::uint32_t{0});
        put(file);
        put(std::uint32_t{0});
        if (common & Bulk::commonError) put(error);
        std::size_t reference = 0;
        if (common & Bulk::commonName) {
            reference = put(std::int32_t{0});
            put(static_cast<std::uint32_t>(name.size() + 1));
        }
        if (common & Bulk::commonDeviceID) put(std::int32_t{16777232});
        if (common & Bulk::commonObjectType) put(type);
        if (common & Bulk::commonModificationTime) {
            put(std::int64_t{1'700'000'000});
            put(std::int64_t{250});
        }
        if (common & Bulk::commonFileID) put(std::uint64_t{0x0102030405060708});
        if (file & Bulk::fileLinkCount) put(std::uint32_t{2});
        if (file & Bulk::fileTotalSize) put(std::int64_t{10'000});
        if (file & Bulk::fileAllocatedSize) put(std::int64_t{12'288});
        if (common & Bulk::commonName) {
            const auto offset = static_cast<std::int32_t>(out.size() - reference) + nameOffsetShift;
            std::memcpy(out.data() + reference, &offset, sizeof offset);
            for (char c : name) out.push_back(static_cast<std::byte>(c));
            out.push_back(terminateName ? std::byte{0} : std::byte{'x'});
            out.resize((out.size() + 3) / 4 * 4, std::byte{'y'});
        }
        const auto length = claimedLength.value_or(static_cast<std::uint32_t>(out.size()));
        std::memcpy(out.data(), &length, sizeof length);
        return out;
    }
};

// A record differing from the plain file record where `change` says.
Record record(const std::function<void(Record&)>& change) {
    Record result;
    change(result);
    return result;
}

std::vector<std::byte> batch(const std::vector<Record>& records) {
    std::vector<std::byte> out;
    for (const auto& record : records) {
        const auto bytes = record.bytes();
        out.insert(out.end(), bytes.begin(), bytes.end());
    }
    out.resize(out.size() + 64);  // the caller's buffer is larger than what was filled
    return out;
}

TEST(BulkAttributeRecords, AFileCarriesEverythingTheScannerAsksFor) {
    const auto buffer = batch({Record{}});
    std::vector<ScanDirectoryAccess::Entry> entries;
    ASSERT_TRUE(Bulk::decode(buffer, 1, entries));
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(std::string(entries[0].name, entries[0].length), "report.pdf");
    EXPECT_EQ(entries[0].type, EntryType::regular);
    ASSERT_TRUE(entries[0].status.has_value());
    const auto& status = *entries[0].status;
    EXPECT_EQ(status.device, 16777232u);
    EXPECT_EQ(status.mountID, 16777232u);
    EXPECT_EQ(status.inode, 0x0102030405060708u);
    EXPECT_EQ(status.linkCount, 2u);
    EXPECT_EQ(status.logicalBytes, 10'000);
    EXPECT_EQ(status.allocatedBytes, 12'288);
    EXPECT_EQ(status.modifiedNanoseconds, 1'700'000'000'000'000'250);
    EXPECT_EQ(status.type, EntryType::regular);
}

// Which entries come with a status and which the caller must ask about one by one.
TEST(BulkAttributeRecords, AStatusOnlyWhenEveryPartOfItCame) {
    const Record folder = record([](Record& r) {
        r.name = "src";
        r.file = 0;
        r.type = Bulk::typeDirectory;
    });
    const Record link = record([](Record& r) {
        r.name = "latest";
        r.type = Bulk::typeSymlink;
    });
    const Record failed = record([](Record& r) {
        r.name = "locked";
        r.error = 13;
    });
    const Record noSizes = record([](Record& r) {
        r.name = "partial";
        r.file = Bulk::fileLinkCount;
    });
    const Record noTime = record([](Record& r) {
        r.name = "timeless";
        r.common = Bulk::requestedCommon & ~Bulk::commonModificationTime;
    });
    const Record noError = record([](Record& r) {
        r.name = "plain";
        r.common = Bulk::requestedCommon & ~Bulk::commonError;
    });
    const auto buffer = batch({folder, link, failed, noSizes, noTime, noError});
    std::vector<ScanDirectoryAccess::Entry> entries;
    ASSERT_TRUE(Bulk::decode(buffer, 6, entries));
    using Entry = ScanDirectoryAccess::Entry;
    const auto hasStatus = [](const Entry& e) { return e.status.has_value(); };
    ASSERT_EQ(entries.size(), 6u);
    const std::vector<std::pair<EntryType, bool>> expected = {{EntryType::directory, true}, {EntryType::symlink, true},
                                                              {EntryType::regular, false},  {EntryType::regular, false},
                                                              {EntryType::regular, false},  {EntryType::regular, true}};
    for (std::size_t i = 0; i < entries.size(); ++i) {
        SCOPED_TRACE(std::string(entries[i].name, entries[i].length));
        EXPECT_EQ(entries[i].type, expected[i].first);
        EXPECT_EQ(hasStatus(entries[i]), expected[i].second);
    }
    EXPECT_EQ(entries[0].status->logicalBytes, 0);
    EXPECT_EQ(entries[5].status->allocatedBytes, 12'288);  // no error word: the fields still line up
}

TEST(BulkAttributeRecords, AMalformedRecordStopsTheBatchKeepingWhatCameBefore) {
    const std::vector<std::pair<std::string, Record>> cases = {
        {"length shorter than the header", record([](Record& r) { r.claimedLength = 20; })},
        {"length past the buffer", record([](Record& r) { r.claimedLength = 100'000; })},
        {"length cutting into the attributes", record([](Record& r) { r.claimedLength = 40; })},
        {"name before the record", record([](Record& r) { r.nameOffsetShift = -400; })},
        {"name past the record", record([](Record& r) { r.nameOffsetShift = 64; })},
        {"name without its NUL", record([](Record& r) { r.terminateName = false; })},
        {"a volume attribute never asked for", record([](Record& r) { r.volume = 1; })},
        {"a file attribute never asked for", record([](Record& r) { r.file = Bulk::requestedFile | 0x10; })},
    };
    for (const auto& [what, bad] : cases) {
        SCOPED_TRACE(what);
        const auto buffer =
            batch({record([](Record& r) { r.name = "first"; }), bad, record([](Record& r) { r.name = "never"; })});
        std::vector<ScanDirectoryAccess::Entry> entries;
        EXPECT_FALSE(Bulk::decode(buffer, 3, entries));
        EXPECT_THAT(entries, ElementsAre(Field(&ScanDirectoryAccess::Entry::length, 5u)));
    }
    std::vector<ScanDirectoryAccess::Entry> entries;
    EXPECT_FALSE(Bulk::decode(batch({Record{}}), 2, entries)) << "a count larger than the records filled";
}

}  // namespace
}  // namespace corvel
