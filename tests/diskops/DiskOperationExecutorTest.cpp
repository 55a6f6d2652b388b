// The executor on a scripted runner: the exact program and arguments for each operation and
// target on both platforms, the refusals that come before anything runs, and new folders in a
// temporary folder. Nothing here touches a real disk.
#include "DiskObjects.h"
#include "command/CommandError.h"
#include "diskops/DiskOperationError.h"
#include "diskops/DiskOperationExecutor.h"
#include "support/ScriptedRunner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace corvel {
namespace {

using diskopstest::externalDisk;
using diskopstest::externalVolume;
using diskopstest::with;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using testing::ScriptedRunner;
using Call = ScriptedRunner::Call;
using Op = DiskOperation;

PreflightReport passing(Op operation, const DiskObject& target) {
    return {operation, target, {{"Files in use", PreflightCheck::Status::pass, "none"}}, {}, {}};
}

struct ArgumentsCase {
    const char* name;
    Platform platform;
    DiskOperation operation;
    DiskObject target;
    std::vector<Call> calls;
};

TEST(DiskOperationExecutor, RunsExactlyTheseProgramsForEachOperationAndTarget) {
    const auto unmounted = with(externalVolume(), [](DiskObject& o) { o.mountPoint.reset(); });
    const auto sdb1 = with(externalVolume(), [](DiskObject& o) {
        o.identifier = "sdb1";
        o.mountPoint = "/media/sam/Backup";
        o.physicalDiskID = "sdb";
    });
    const auto sdb = with(externalDisk(), [](DiskObject& o) { o.identifier = "sdb"; });
    const std::string diskutil = "/usr/sbin/diskutil";
    const std::string udisks = "/usr/bin/udisksctl";
    const auto mac = Platform::macos;
    const auto linux = Platform::linux;
    const std::vector<ArgumentsCase> cases{
        {"mount a volume", mac, Op::mount, unmounted, {{diskutil, {"mount", "disk4s1"}}}},
        {"mount a disk", mac, Op::mount, externalDisk(), {{diskutil, {"mountDisk", "disk4"}}}},
        {"unmount a volume by its mount point",
         mac,
         Op::unmount,
         externalVolume(),
         {{diskutil, {"unmount", "/Volumes/Backup"}}}},
        {"unmount a disk", mac, Op::unmount, externalDisk(), {{diskutil, {"unmountDisk", "disk4"}}}},
        {"eject a volume ejects its disk", mac, Op::eject, externalVolume(), {{diskutil, {"eject", "disk4"}}}},
        {"verify", mac, Op::verifyVolume, externalVolume(), {{diskutil, {"verifyVolume", "disk4s1"}}}},
        {"Linux: unmount a file system", linux, Op::unmount, sdb1, {{udisks, {"unmount", "-b", "/dev/sdb1"}}}},
        {"Linux: unmount a disk member by member, deepest first",
         linux,
         Op::unmount,
         sdb,
         {{udisks, {"unmount", "-b", "/dev/sdb2"}}, {udisks, {"unmount", "-b", "/dev/sdb1"}}}},
        {"Linux: mount a disk's unmounted file systems",
         linux,
         Op::mount,
         sdb,
         {{udisks, {"mount", "-b", "/dev/sdb3"}}}},
        {"Linux: eject unmounts first, then powers off",
         linux,
         Op::eject,
         sdb1,
         {{udisks, {"unmount", "-b", "/dev/sdb2"}},
          {udisks, {"unmount", "-b", "/dev/sdb1"}},
          {udisks, {"power-off", "-b", "/dev/sdb"}}}},
        {"Linux: verify is a read-only check",
         linux,
         Op::verifyVolume,
         with(sdb1, [](DiskObject& o) { o.mountPoint.reset(); }),
         {{"/usr/sbin/fsck", {"-n", "/dev/sdb1"}}}},
    };
    for (const auto& c : cases) {
        ScriptedRunner runner;
        for (const auto& call : c.calls) runner.answer(call.executable, call.arguments, std::string("  done\n"));
        const DiskOperationExecutor executor(runner, c.platform, {{"sdb2", "sdb1"}, {"sdb3"}});
        EXPECT_NO_THROW(executor.run(c.operation, c.target, passing(c.operation, c.target), true)) << c.name;
        EXPECT_THAT(runner.calls, ElementsAreArray(c.calls)) << c.name;
    }
}

TEST(DiskOperationExecutor, RefusesBeforeRunningAnything) {
    const auto volume = externalVolume();
    const auto failing =
        PreflightReport{Op::unmount, volume, {{"Files in use", PreflightCheck::Status::fail, "Finder"}}, {}, {}};
    const auto otherTarget = passing(Op::unmount, with(volume, [](DiskObject& o) { o.identifier = "disk5s1"; }));
    struct Refusal {
        const char* name;
        DiskOperation operation;
        PreflightReport report;
        bool confirmed;
        std::string description;
    };
    const std::vector<Refusal> refusals{
        {"not confirmed", Op::unmount, passing(Op::unmount, volume), false, "The operation was not confirmed."},
        {"failed preflight", Op::unmount, failing, true, "Preflight failed: Finder"},
        {"report for another operation", Op::unmount, passing(Op::mount, volume), true, "Preflight failed: "},
        {"report for another target", Op::unmount, otherTarget, true, "Preflight failed: "},
        {"repair", Op::firstAid, passing(Op::firstAid, volume), true, "First Aid (Repair) is plan-only in this build."},
        {"add volume", Op::createAPFSVolume, passing(Op::createAPFSVolume, volume), true,
         "Add APFS Volume is plan-only in this build."},
        {"format", Op::prepareFormat, passing(Op::prepareFormat, volume), true,
         "Prepare Formatting is plan-only in this build."},
    };
    for (const auto& r : refusals) {
        ScriptedRunner runner;
        const DiskOperationExecutor executor(runner);
        try {
            executor.run(r.operation, volume, r.report, r.confirmed);
            ADD_FAILURE() << r.name << " ran";
        } catch (const DiskOperationError& error) {
            EXPECT_EQ(error.description(), r.description) << r.name;
        }
        EXPECT_THAT(runner.calls, IsEmpty()) << r.name;
    }
}

TEST(DiskOperationExecutor, ReportsTheToolsFailureAndTrimsItsOutput) {
    ScriptedRunner runner;
    const auto volume = externalVolume();
    runner.answer({"verifyVolume", "disk4s1"}, std::string("\n  Volume appears to be OK \xff\n"));
    runner.answer({"unmount", "/Volumes/Backup"}, CommandError::failed(1, "Unmount failed: resource busy"));
    const DiskOperationExecutor executor(runner);
    EXPECT_EQ(executor.run(Op::verifyVolume, volume, passing(Op::verifyVolume, volume), true),
              "Volume appears to be OK \xEF\xBF\xBD");
    try {
        executor.run(Op::unmount, volume, passing(Op::unmount, volume), true);
        ADD_FAILURE() << "a failed unmount passed";
    } catch (const DiskOperationError& error) {
        EXPECT_EQ(error.kind(), DiskOperationError::Kind::commandFailed);
        EXPECT_THAT(error.description(), ::testing::HasSubstr("resource busy"));
    }
}

TEST(DiskOperationExecutor, MakesNewFoldersTrimmedAndRefusesBadNamesAndExistingOnes) {
    testing::TemporaryFolder folder;
    for (const std::string bad : {"", "   ", ".", "..", "a/b", "a:b"}) {
        try {
            DiskOperationExecutor::createDirectory(bad, folder.root(), true);
            ADD_FAILURE() << "made '" << bad << "'";
        } catch (const DiskOperationError& error) {
            EXPECT_EQ(error.description(), "“" + bad + "” is not a valid folder name.");
        }
    }
    EXPECT_THROW(DiskOperationExecutor::createDirectory("Exports", folder.root(), false), DiskOperationError);
    EXPECT_FALSE(std::filesystem::exists(folder.root() / "Exports"));

    EXPECT_EQ(DiskOperationExecutor::createDirectory("  Exports ", folder.root(), true), folder.root() / "Exports");
    EXPECT_TRUE(std::filesystem::is_directory(folder.root() / "Exports"));
    try {
        DiskOperationExecutor::createDirectory("Exports", folder.root(), true);
        ADD_FAILURE() << "made Exports twice";
    } catch (const DiskOperationError& error) {
        EXPECT_EQ(error.description(), (folder.root() / "Exports").string() + " already exists.");
    }
}

}  // namespace
}  // namespace corvel
