// The /proc reader: its pure decoders on captured text, and live scans that must find a real
// child's files and this test's own, by device for a mount point and through the maps for a file
// that is only mapped.
#include "processes/CurrentProcess.h"
#include "processes/ProcOpenFiles.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/UniqueFd.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <memory>
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

// A listing long enough to be read on two threads still finds every process once, in pid order.
TEST(ProcOpenFiles, ABusyMachinesListingIsReadWhole) {
    testing::TemporaryFolder folder;
    std::vector<std::unique_ptr<testing::ChildProcess>> children;
    for (int i = 0; i < 200; ++i)
        children.push_back(std::make_unique<testing::ChildProcess>(
            std::vector<std::string>{"/bin/sh", "-c", "cd \"$0\" && exec sleep 30", folder.path()}));
    ProcOpenFiles lister;
    std::vector<std::int32_t> pids;
    ASSERT_TRUE(testing::eventually([&] {
        pids.clear();
        for (const auto& usage : lister.usages(folder.path()))
            if (usage.kind == ProcessUsage::Kind::workingDirectory) pids.push_back(usage.pid);
        return pids.size() >= children.size();
    }));
    std::vector<std::int32_t> expected;
    for (const auto& child : children) expected.push_back(static_cast<std::int32_t>(child->pid()));
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(pids, expected);
}

// The mount point holding `path`: the highest folder above it still on its device.
std::string mountRootOf(std::string path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0) return path;
    while (path != "/") {
        const auto parent = std::filesystem::path(path).parent_path().string();
        struct stat above {};
        if (::stat(parent.c_str(), &above) != 0 || above.st_dev != facts.st_dev) break;
        path = parent;
    }
    return path;
}

std::vector<ProcessUsage> usagesUntil(ProcOpenFiles& lister, const std::string& scope, std::int32_t pid,
                                      const std::string& path) {
    std::vector<ProcessUsage> usages;
    testing::eventually([&] {
        usages = lister.usages(scope);
        return std::any_of(usages.begin(), usages.end(),
                           [&](const ProcessUsage& usage) { return usage.pid == pid && usage.path == path; });
    });
    return usages;
}

TEST(ProcOpenFiles, AMountPointCountsFilesOnItsDeviceOnly) {
    testing::TemporaryFolder folder;
    const auto held = folder.write("held.txt", "held");
    // A file of another file system whose path still lies below the mount point when that is /.
    const std::string elsewhere = "/dev/null";
    struct stat here {
    }, there{};
    ASSERT_EQ(::stat(held.c_str(), &here), 0);
    ASSERT_EQ(::stat(elsewhere.c_str(), &there), 0);
    if (here.st_dev == there.st_dev) GTEST_SKIP() << elsewhere << " is on the temporary folder's device";
    testing::ChildProcess holder({"/bin/sh", "-c", "exec 3<\"$0\" 4<\"$1\" && exec sleep 30", held, elsewhere});
    const auto pid = static_cast<std::int32_t>(holder.pid());

    ProcOpenFiles lister;
    const auto usages = usagesUntil(lister, mountRootOf(folder.path()), pid, held);
    EXPECT_THAT(usages, Contains(ProcessUsage{pid, "sleep", held, ProcessUsage::Kind::openFile}));
    EXPECT_THAT(usages, Not(Contains(AllOf(Field(&ProcessUsage::pid, pid), Field(&ProcessUsage::path, elsewhere)))));
}

TEST(ProcOpenFiles, AFileOnlyMappedStillHoldsItsFolder) {
    testing::TemporaryFolder folder;
    const auto mapped = folder.write("mapped.bin", std::string(4096, 'm'));
    void* memory = MAP_FAILED;
    {
        const UniqueFd fd(::open(mapped.c_str(), O_RDONLY | O_CLOEXEC));
        ASSERT_TRUE(fd);
        memory = ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE, fd.get(), 0);
    }
    ASSERT_NE(memory, MAP_FAILED);

    ProcOpenFiles lister;
    const auto usages = lister.usages(folder.path());
    ::munmap(memory, 4096);
    EXPECT_THAT(usages,
                ElementsAre(AllOf(Field(&ProcessUsage::pid, currentProcessID()), Field(&ProcessUsage::path, mapped),
                                  Field(&ProcessUsage::kind, ProcessUsage::Kind::openFile))));
}

}  // namespace
}  // namespace corvel
