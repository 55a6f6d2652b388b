#include "processes/ProcPidFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace corvel {
namespace {

using ::testing::Field;
using ::testing::Optional;

// Captured from a Debian 12 machine.
const char* const catStat =
    "3877 (cat) R 3875 3875 18469 0 -1 4194304 99 0 0 0 7 3 0 0 20 0 1 0 966789 3133440 365 "
    "18446744073709551615 94439405346816 94439405366697 140727877397984 0 0 0 0 0 0 0 0 0 17 0 0 0 0 0 0\n";
const char* const kthreaddStat =
    "2 (kthreadd) S 0 0 0 0 -1 2129984 0 0 0 0 0 0 0 0 20 0 1 0 24 0 0 18446744073709551615 0 0 0 0 0 0 0 "
    "2147483647 0 1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";
const char* const statusText =
    "Name:\tcat\nUmask:\t0022\nState:\tR (running)\nTgid:\t3877\nNgid:\t0\nPid:\t3877\nPPid:\t3875\n"
    "TracerPid:\t0\nUid:\t1000\t0\t0\t0\nGid:\t1000\t1000\t1000\t1000\nFDSize:\t64\nVmRSS:\t    1460 kB\n";
const char* const rollupText =
    "55e609e39000-7ffd84a1c000 ---p 00000000 00:00 0                          [rollup]\n"
    "Rss:                1636 kB\nPss:                 226 kB\nPss_Dirty:           112 kB\n"
    "Pss_Anon:            112 kB\nShared_Clean:       1484 kB\n";

TEST(ProcPidFiles, StatLineGivesParentTimesStartAndResidentPages) {
    const auto stat = ProcPidFiles::parseStat(catStat);
    ASSERT_TRUE(stat);
    EXPECT_EQ(*stat, (ProcPidFiles::Stat{"cat", 'R', 3875, 4194304, 7, 3, 966789, 365}));
    EXPECT_FALSE(ProcPidFiles::isKernelThread(*stat));
    EXPECT_FALSE(ProcPidFiles::isZombie(*stat));
    const auto kernel = ProcPidFiles::parseStat(kthreaddStat);
    ASSERT_TRUE(kernel);
    EXPECT_TRUE(ProcPidFiles::isKernelThread(*kernel));
}

TEST(ProcPidFiles, NamesMayHoldSpacesAndParentheses) {
    // A program may call itself anything, ") S 1" included; only the last ')' ends the name.
    const auto stat = ProcPidFiles::parseStat(
        "77 (evil) S 1 (x) Z 5 77 77 0 -1 4194560 0 0 0 0 12 4 0 0 20 0 1 0 500 1000 9 18446744073709551615 0");
    ASSERT_TRUE(stat);
    EXPECT_EQ(*stat, (ProcPidFiles::Stat{"evil) S 1 (x", 'Z', 5, 4194560, 12, 4, 500, 9}));
    EXPECT_TRUE(ProcPidFiles::isZombie(*stat));
}

TEST(ProcPidFiles, MalformedStatLinesAreRejected) {
    for (const char* text : {"", "3877 cat R 3875", "3877 (cat) R 3875 3875 18469 0 -1 4194304 99 0 0 0 7 3",
                             "3877 (cat) R x 3875 18469 0 -1 4194304 99 0 0 0 7 3 0 0 20 0 1 0 966789 3133440 365",
                             "3877 (cat) RR 3875 3875 18469 0 -1 4194304 99 0 0 0 7 3 0 0 20 0 1 0 966789 3133440 365"})
        EXPECT_FALSE(ProcPidFiles::parseStat(text)) << text;
}

TEST(ProcPidFiles, StatusGivesTheRealUserAndRollupTheProportionalSet) {
    EXPECT_THAT(ProcPidFiles::parseStatus(statusText), Field(&ProcPidFiles::Status::realUid, Optional(1000u)));
    EXPECT_EQ(ProcPidFiles::parseStatus("Name:\tcat\n").realUid, std::nullopt);
    EXPECT_THAT(ProcPidFiles::parseSmapsRollup(rollupText), Optional(226 * 1024));
    // A kernel thread's rollup is empty; Pss_Dirty alone is not the proportional set size.
    EXPECT_EQ(ProcPidFiles::parseSmapsRollup(""), std::nullopt);
    EXPECT_EQ(ProcPidFiles::parseSmapsRollup("Pss_Dirty:  112 kB\n"), std::nullopt);
}

TEST(ProcPidFiles, ExecutableLinkLosesTheDeletedMark) {
    EXPECT_EQ(ProcPidFiles::executableFromLink("/usr/bin/firefox (deleted)"), "/usr/bin/firefox");
    EXPECT_EQ(ProcPidFiles::executableFromLink("/opt/my (deleted) app/run"), "/opt/my (deleted) app/run");
}

TEST(ProcPidFiles, SampleUsesPssWhereReadableElseResidentPages) {
    const auto stat = *ProcPidFiles::parseStat(catStat);
    const auto status = ProcPidFiles::parseStatus(statusText);
    const ProcPidFiles::Units units{100, 4096};

    // 10 ticks of 10 ms; the name comes from the stat line.
    const ProcessSample withPss{3877,   3875,        1000, "cat",      "/usr/bin/cat",          false,
                                966789, 100'000'000, 0,    226 * 1024, MemoryKind::proportional};
    EXPECT_EQ(ProcPidFiles::sample(3877, stat, status, 226 * 1024, "/usr/bin/cat", units), withPss);
    auto withoutPss = withPss;
    withoutPss.executablePath.reset();
    withoutPss.memoryBytes = 365 * 4096;
    withoutPss.memoryKind = MemoryKind::resident;
    EXPECT_EQ(ProcPidFiles::sample(3877, stat, status, std::nullopt, std::nullopt, units), withoutPss);

    // An owner we cannot read is never taken for root or for the person running us.
    const auto unknown = ProcPidFiles::sample(3877, stat, {}, std::nullopt, std::nullopt, units);
    EXPECT_EQ(unknown.uid, std::numeric_limits<std::uint32_t>::max());
}

}  // namespace
}  // namespace corvel
