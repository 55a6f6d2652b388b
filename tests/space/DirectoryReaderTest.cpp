#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "SpaceTestFiles.h"
#include "space/DirectoryReader.h"
#include "space/FileAttributes.h"

namespace corvel {
namespace {

using DirectoryReader::Entry;
using DirectoryReader::EntryType;
using DirectoryReader::Failure;
using ::testing::AllOf;
using ::testing::Eq;
using ::testing::HasSubstr;
using ::testing::Property;
using ::testing::Throws;
using ::testing::ThrowsMessage;

std::vector<Entry> sorted(std::vector<Entry> entries) {
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

TEST(DirectoryReaderRead, ListsEveryEntryWithItsTypeAndWithoutDotEntries) {
    spacetest::TemporaryFolder folder;
    folder.write("file.txt", "x");
    folder.write(".hidden", "y");
    folder.makeFolder("sub");
    ASSERT_EQ(symlink("file.txt", folder.path("link").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(sorted(DirectoryReader::read(folder.path())), (std::vector<Entry>{{".hidden", EntryType::regular},
                                                                                {"file.txt", EntryType::regular},
                                                                                {"link", EntryType::symlink},
                                                                                {"pipe", EntryType::other},
                                                                                {"sub", EntryType::directory}}));
    EXPECT_TRUE(DirectoryReader::read(folder.path("sub")).empty());
}

TEST(DirectoryReaderRead, KeepsNameBytesSoThatChildPathsStillOpen) {
    spacetest::TemporaryFolder folder;
    const std::string latin1Name = "caf\xE9.txt";  // not UTF-8
    folder.write(latin1Name, "data");
    const auto entries = DirectoryReader::read(folder.path());
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].name, latin1Name);
    const auto facts = FileAttributes::facts(folder.path(entries[0].name));
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->logicalBytes, 4);
}

TEST(DirectoryReaderRead, ReportsMissingFoldersAndFilesAsOtherFailures) {
    spacetest::TemporaryFolder folder;
    folder.write("plain.txt", "x");

    const auto readMissing = [&] { DirectoryReader::read(folder.path("missing")); };
    EXPECT_THAT(readMissing, Throws<Failure>(Eq(Failure::other(ENOENT, "ignored"))));
    EXPECT_THAT(readMissing, ThrowsMessage<Failure>(HasSubstr(folder.path("missing"))));
    EXPECT_THAT([&] { DirectoryReader::read(folder.path("plain.txt")); },
                Throws<Failure>(
                    AllOf(Property(&Failure::kind, Failure::Kind::other), Property(&Failure::errorNumber, ENOTDIR))));
    EXPECT_FALSE(DirectoryReader::entries(folder.path("missing")));
    EXPECT_TRUE(DirectoryReader::entries(folder.path()));
}

TEST(DirectoryReaderRead, ReportsALockedFolderAsDenied) {
    if (geteuid() == 0) GTEST_SKIP() << "running as root: folder permissions do not stop root";
    spacetest::TemporaryFolder folder;
    folder.makeFolder("locked");
    ASSERT_EQ(chmod(folder.path("locked").c_str(), 0), 0);
    EXPECT_THAT([&] { DirectoryReader::read(folder.path("locked")); },
                Throws<Failure>(Property(&Failure::kind, Failure::Kind::accessDenied)));
}

TEST(DirectoryReaderEntryType, MapsTheEntryTypeByteAndLeavesUnknownAsOther) {
    for (const auto& [byte, type] : {std::pair{DT_DIR, EntryType::directory},
                                     {DT_REG, EntryType::regular},
                                     {DT_LNK, EntryType::symlink},
                                     {DT_UNKNOWN, EntryType::other},
                                     {DT_SOCK, EntryType::other}})
        EXPECT_EQ(DirectoryReader::entryType(byte), type) << int(byte);
}

}  // namespace
}  // namespace corvel
