// The accounting's decoders on literal samples of what the tools print, the malformed ones
// included: a listing that is not one must throw, never read as an empty list.
#include "accounting/BtrfsParser.h"
#include "accounting/ListingParseError.h"
#include "accounting/SnapshotListParser.h"
#include "accounting/SwapArea.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

TEST(BtrfsParser, ReadsSnapshotListsWithTimesAndPathsWithBlanks) {
    const auto subvolumes = BtrfsParser::parseSubvolumeList(
        "ID 257 gen 7 cgen 7 top level 5 otime 2026-11-24 18:28:59 path .snapshots/home-1\n"
        "ID 300 gen 9 cgen 9 top level 256 otime - path @/my snap\n");
    EXPECT_THAT(subvolumes, ElementsAre(BtrfsSubvolume{257, 5, ".snapshots/home-1", "2026-11-24 18:28:59"},
                                        BtrfsSubvolume{300, 256, "@/my snap", std::nullopt}));
    EXPECT_THAT(BtrfsParser::parseSubvolumeList(""), IsEmpty());
}

TEST(BtrfsParser, ReadsDuInBytesAndHumanUnits) {
    const auto usage = BtrfsParser::parseFilesystemDu(
        "     Total   Exclusive  Set shared  Filename\n"
        "  20000768    20000768           0  /mnt/.snapshots/home-1\n"
        "   4.41GiB     1.50MiB           -  /mnt/a b\n");
    EXPECT_THAT(usage, ElementsAre(BtrfsUsage{"/mnt/.snapshots/home-1", 20000768, 20000768, 0},
                                   BtrfsUsage{"/mnt/a b", 4735201444, 1572864, std::nullopt}));
}

TEST(BtrfsParser, ReadsDfSkippingConversionWarnings) {
    const auto lines = BtrfsParser::parseFilesystemDf(
        "Data, single: total=41943040, used=25001984\n"
        "WARNING: Multiple block group profiles detected\n"
        "Metadata, DUP: total=33554432, used=212992\n");
    EXPECT_THAT(lines, ElementsAre(BtrfsSpaceLine{"Data", "single", 41943040, 25001984},
                                   BtrfsSpaceLine{"Metadata", "DUP", 33554432, 212992}));
}

TEST(BtrfsParser, RejectsWhatIsNotAListing) {
    const std::vector<std::pair<std::string, std::function<void()>>> cases{
        {"btrfs subvolume list", [] { BtrfsParser::parseSubvolumeList("ERROR: not a btrfs filesystem: /\n"); }},
        {"btrfs subvolume list", [] { BtrfsParser::parseSubvolumeList("ID x gen 7 top level 5 path a\n"); }},
        {"btrfs filesystem du", [] { BtrfsParser::parseFilesystemDu(""); }},
        {"btrfs filesystem du", [] { BtrfsParser::parseFilesystemDu("20000768 20000768 0 /mnt\n"); }},
        {"btrfs filesystem du", [] { BtrfsParser::parseFilesystemDu("Total Exclusive Set Filename\n12 -3 0 /x\n"); }},
        {"btrfs filesystem df", [] { BtrfsParser::parseFilesystemDf("Data: 12 bytes\n"); }},
    };
    for (const auto& [listing, decode] : cases) {
        try {
            decode();
            ADD_FAILURE() << listing << " accepted a malformed sample";
        } catch (const ListingParseError& error) {
            EXPECT_EQ(error.listing(), listing);
            EXPECT_THAT(error.description(), HasSubstr(listing + ": "));
        }
    }
}

TEST(BtrfsParser, SizesStopAtTheSigned64BitLimit) {
    EXPECT_THAT(BtrfsParser::parseSize("9223372036854775807"), Optional(INT64_MAX));
    EXPECT_EQ(BtrfsParser::parseSize("9223372036854775808"), std::nullopt);
    EXPECT_EQ(BtrfsParser::parseSize("8.00EiB"), std::nullopt);
    EXPECT_NE(BtrfsParser::parseSize("7.99EiB"), std::nullopt);
    EXPECT_THAT(BtrfsParser::parseSize("0B"), Optional(0));
    EXPECT_EQ(BtrfsParser::parseSize("1.2.3GiB"), std::nullopt);
    EXPECT_EQ(BtrfsParser::parseSize("GiB"), std::nullopt);
}

constexpr const char* apfsListing = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>Snapshots</key>
	<array>
		<dict>
			<key>LimitingContainerShrink</key>
			<false/>
			<key>Purgeable</key>
			<true/>
			<key>SnapshotName</key>
			<string>com.apple.TimeMachine.2026-07-30-071923.local</string>
			<key>SnapshotUUID</key>
			<string>4B3F0E9A-2C1D-4E5F-8A6B-7C8D9E0F1A2B</string>
		</dict>
		<dict>
			<key>SnapshotUUID</key>
			<string>no name, skipped</string>
		</dict>
		<dict>
			<key>SnapshotName</key>
			<string>com.apple.os.update-8A7C3D</string>
		</dict>
	</array>
</dict>
</plist>
)";

TEST(SnapshotListParser, ReadsAPFSSnapshotsWithTheirFlagsAndDates) {
    const auto snapshots = SnapshotListParser::parseAPFS(apfsListing);
    ASSERT_EQ(snapshots.size(), 2u);
    EXPECT_EQ(snapshots[0].name, "com.apple.TimeMachine.2026-07-30-071923.local");
    EXPECT_THAT(snapshots[0].localTime, Optional(std::string("2026-07-30 07:19:23")));
    EXPECT_THAT(snapshots[0].isPurgeable, Optional(true));
    EXPECT_THAT(snapshots[0].limitsContainerShrink, Optional(false));
    EXPECT_EQ(snapshots[0].bytes, std::nullopt);  // APFS never says, so it stays unknown
    EXPECT_THAT(snapshots[1], Field(&LocalSnapshot::localTime, std::nullopt));
}

TEST(SnapshotListParser, EmptyListIsNoSnapshotsAndAMalformedOneThrows) {
    EXPECT_THAT(SnapshotListParser::parseAPFS(
                    R"(<?xml version="1.0"?><plist version="1.0"><dict><key>Snapshots</key><array/></dict></plist>)"),
                IsEmpty());
    EXPECT_ANY_THROW(SnapshotListParser::parseAPFS("Error: not a volume"));
    EXPECT_ANY_THROW(SnapshotListParser::parseAPFS(
        R"(<?xml version="1.0"?><plist version="1.0"><dict><key>Other</key><array/></dict></plist>)"));
    EXPECT_ANY_THROW(SnapshotListParser::parseAPFS(R"(<?xml version="1.0"?><plist version="1.0"><array/></plist>)"));
}

TEST(SnapshotListParser, ReadsTimeMachineNamesAndRejectsMessages) {
    const auto snapshots = SnapshotListParser::parseTimeMachine(
        "Snapshots for volume group containing disk /:\n"
        "com.apple.TimeMachine.2026-07-30-071923.local\n"
        "com.apple.TimeMachine.2026-07-29-220102.local (dataless)\n");
    EXPECT_THAT(snapshots, ElementsAre(Field(&LocalSnapshot::localTime, Optional(std::string("2026-07-30 07:19:23"))),
                                       Field(&LocalSnapshot::name, "com.apple.TimeMachine.2026-07-29-220102.local")));
    EXPECT_THAT(SnapshotListParser::parseTimeMachine("Snapshots for disk /:\n"), IsEmpty());
    EXPECT_THROW(SnapshotListParser::parseTimeMachine("Unable to list snapshots: permission denied\n"),
                 ListingParseError);
    // A longer number that happens to hold the pattern is not a date.
    EXPECT_EQ(SnapshotListParser::timeMachineLocalTime("x12026-07-30-071923"), std::nullopt);
}

TEST(SwapArea, ReadsFilesAndPartitionsWithEscapedPaths) {
    const auto areas = SwapArea::parseList(
        "Filename\t\t\t\tType\t\tSize\t\tUsed\t\tPriority\n"
        "/swap\\040file                         file\t\t2097148\t\t1024\t\t-2\n"
        "/dev/nvme0n1p3                          partition\t8388604\t\t0\t\t-3\n");
    EXPECT_THAT(areas, ElementsAre(SwapArea{"/swap file", "file", 2147479552, 1048576},
                                   SwapArea{"/dev/nvme0n1p3", "partition", 8589930496, 0}));
    EXPECT_THAT(SwapArea::parseList("Filename Type Size Used Priority\n"), IsEmpty());
    EXPECT_THROW(SwapArea::parseList(""), ListingParseError);
    EXPECT_THROW(SwapArea::parseList("Filename Type Size Used Priority\n/swapfile file many 0 -2\n"),
                 ListingParseError);
}

}  // namespace
}  // namespace corvel
