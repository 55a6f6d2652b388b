// The /proc reader: its pure decoders on captured text, and a live scan that must find a real
// child's files and this test's own.
#include "processes/CurrentProcess.h"
#include "processes/ProcOpenFiles.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::Not;

TEST(ProcOpenFiles, DecodesProcEntriesLinksAndMaps) {
    EXPECT_EQ(ProcOpenFiles::processID("4711"), 4711);
    for (const auto* entry : {"self", "sys", "", "12a", "0", "99999999999"})
        EXPECT_EQ(ProcOpenFiles::processID(entry), std::nullopt) << entry;

    EXPECT_EQ(ProcOpenFiles::pathFromLink("/mnt/x/file (deleted)"), "/mnt/x/file");
    EXPECT_EQ(ProcOpenFiles::pathFromLink("/mnt/a (deleted) b"), "/mnt/a (deleted) b");
    for (const auto* link : {"socket:[123]", "pipe:[4]", "anon_inode:[eventfd]", ""})
        EXPECT_EQ(ProcOpenFiles::pathFromLink(link), "") << link;
    EXPECT_EQ(ProcOpenFiles::commandFromComm("sleep\n"), "sleep");

    const ProcOpenFiles::Scope folder{7, "/mnt/x/sub", false};
    EXPECT_TRUE(ProcOpenFiles::isInScope(folder, 7, "/mnt/x/sub/f"));
    EXPECT_FALSE(ProcOpenFiles::isInScope(folder, 7, "/mnt/x/subway"));
    EXPECT_FALSE(ProcOpenFiles::isInScope(folder, 8, "/mnt/x/sub/f"));
    EXPECT_TRUE(ProcOpenFiles::isInScope({7, "/mnt/x", true}, 7, "/elsewhere/through/a/bind"));

    const std::string maps =
        "7f00-7f01 r-xp 00000000 07:01 12 /mnt/x/lib.so\n"
        "7f01-7f02 r--p 00001000 07:01 12 /mnt/x/lib.so\n"
        "7f02-7f03 rw-p 00000000 00:00 0 \n"
        "7f03-7f04 r--p 00000000 08:01 99 /usr/lib/libc.so\n"
        "7f04-7f05 r--p 00000000 07:01 13 /mnt/x/with space (deleted)\n";
    EXPECT_THAT(ProcOpenFiles::mappedFiles(maps, 7, 1), ElementsAre("/mnt/x/lib.so", "/mnt/x/with space"));
}

TEST(ProcOpenFiles, FindsAChildsFilesAndThisProcesssOwn) {
    testing::TemporaryFolder folder;
    const auto held = folder.write("held.txt", "held");
    const auto ours = folder.write("ours.txt", "ours");
    testing::TemporaryFolder other;
    const auto elsewhere = other.write("unrelated.txt", "x");
    std::ifstream ownFile(ours);
    std::ifstream unrelated(elsewhere);
    testing::ChildProcess holder({"/bin/sh", "-c", "cd \"$1\" && exec 3<\"$0\" && exec sleep 30", held, folder.path()});

    ProcOpenFiles lister;
    std::vector<ProcessUsage> usages;
    ASSERT_TRUE(testing::eventually([&] {
        usages = lister.usages(folder.path());
        return std::any_of(usages.begin(), usages.end(),
                           [&](const ProcessUsage& usage) { return usage.pid == holder.pid() && usage.path == held; });
    }));
    const auto pid = static_cast<std::int32_t>(holder.pid());
    EXPECT_THAT(usages, Contains(ProcessUsage{pid, "sleep", held, ProcessUsage::Kind::openFile}));
    EXPECT_THAT(usages, Contains(ProcessUsage{pid, "sleep", folder.path(), ProcessUsage::Kind::workingDirectory}));
    EXPECT_THAT(usages,
                Contains(AllOf(Field(&ProcessUsage::pid, currentProcessID()), Field(&ProcessUsage::path, ours))));
    EXPECT_THAT(usages, Not(Contains(Field(&ProcessUsage::path, elsewhere))));
    EXPECT_THAT(lister.usages(folder.path("no-such-thing")), ::testing::IsEmpty());
}

}  // namespace
}  // namespace corvel
