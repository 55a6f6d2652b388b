// The preflight's checks on recorded tool output (the macOS disk tool and lsof through a scripted
// runner) and on a real loop-mounted image that a child process and this test hold files on.
#include "DiskObjects.h"
#include "diskops/DiskOperationPreflight.h"
#include "processes/LiveOpenFiles.h"
#include "processes/LsofOpenFiles.h"
#include "support/ChildProcess.h"
#include "support/LoopVolume.h"
#include "support/ScriptedRunner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace corvel {
namespace {

using diskopstest::with;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::ScriptedRunner;
using Op = DiskOperation;
using Status = PreflightCheck::Status;

const std::string elementsUUID = "6A1C3E5B-0000-4000-8000-53D7F9A1C3E5";

DiskObject elements() {
    return with(diskopstest::externalVolume(), [](DiskObject& o) {
        o.identifier = "disk4s2";
        o.name = "Elements";
        o.mountPoint = "/Volumes/Elements";
        o.volumeUUID = elementsUUID;
    });
}

PreflightCheck pass(std::string title, std::string detail) {
    return {std::move(title), Status::pass, std::move(detail)};
}
PreflightCheck fail(std::string title, std::string detail) {
    return {std::move(title), Status::fail, std::move(detail)};
}

// The disk tool and lsof as recorded on a Mac where Finder (pid 412) and zsh hold files on Elements.
class RecordedMacPreflight : public ::testing::Test {
protected:
    RecordedMacPreflight() {
        runner_.answer({"info", "-plist", "disk4s2"},
                       testing::readFixture("machines/mac-studio-disk-actions/info-disk4s2.plist"));
        runner_.answer(LsofOpenFiles::executable, LsofOpenFiles::arguments("/Volumes/Elements"),
                       testing::readFixture("machines/mac-studio-disk-actions/lsof-elements.txt"));
    }
    PreflightReport run(Op operation, const DiskObject& target, std::int32_t ownPid = 1) {
        LsofOpenFiles lister(runner_);
        const DiskOperationPreflight preflight(runner_, lister, "/Applications/Velmora.app", Platform::macos, ownPid);
        return preflight.run(operation, target, {}, TimePoint{});
    }
    ScriptedRunner runner_;
};

TEST_F(RecordedMacPreflight, UnmountIsRefusedWhileOtherProcessesHoldFiles) {
    const auto report = run(Op::unmount, elements());
    EXPECT_THAT(report.checks,
                ElementsAre(pass("Operation allowed for this object", "Unmount applies to a volume."),
                            pass("Disk identity revalidated", "disk4s2 still matches the selected object."),
                            pass("Running app location", "The app does not run from the target."),
                            fail("Files in use",
                                 "3 open file(s) by Finder, zsh. Quit them first; force-unmount is never used.")));
    EXPECT_EQ(report.processes.size(), 3u);
    EXPECT_FALSE(report.canProceed());
}

TEST_F(RecordedMacPreflight, EachProblemBecomesAFailedCheck) {
    const auto changed = with(elements(), [](DiskObject& o) { o.volumeUUID = "OLD-UUID"; });
    EXPECT_THAT(run(Op::verifyVolume, changed).checks,
                Contains(fail("Disk identity revalidated", "Changed since selection: volume UUID " + elementsUUID +
                                                               " ≠ OLD-UUID. Refresh and select again.")));
    const auto gone = with(elements(), [](DiskObject& o) { o.identifier = "disk9s1"; });
    EXPECT_THAT(run(Op::verifyVolume, gone).checks,
                Contains(fail("Disk identity revalidated", "disk9s1 is no longer present.")));
    const auto internal = with(elements(), [](DiskObject& o) { o.isInternal = true; });
    const auto eject = run(Op::eject, internal).checks;
    EXPECT_THAT(eject, Contains(fail("Internal disk protection", "Internal disks are protected.")));
    EXPECT_THAT(eject,
                Contains(fail("Operation allowed for this object", "Internal and startup disks can't be ejected.")));
    const auto readOnly = with(elements(), [](DiskObject& o) { o.isWritable = false; });
    EXPECT_THAT(run(Op::createDirectory, readOnly).checks,
                Contains(fail("Volume writable", "The volume is read-only.")));
    // Finder's files are this program's own when it runs as pid 412.
    const auto own = run(Op::unmount, elements(), 412).checks;
    EXPECT_THAT(own,
                Contains(fail("Files in use", "1 open file(s) by zsh. Quit them first; force-unmount is never used.")));
    EXPECT_THAT(own, Contains(fail("This app's own files",
                                   "Velmora itself has 2 file(s) open there (e.g. a running scan). Wait for it to "
                                   "finish or cancel it, then retry.")));
}

TEST_F(RecordedMacPreflight, MountPointsAndNetworkVolumesSkipTheIdentityCheck) {
    for (const auto& target : {with(elements(), [](DiskObject& o) { o.kind = DiskObjectKind::mountPoint; }),
                               with(elements(), [](DiskObject& o) { o.isNetwork = true; })}) {
        runner_.calls.clear();
        const auto report = run(Op::createDirectory, target);
        EXPECT_THAT(report.checks, Not(Contains(Field(&PreflightCheck::title, "Disk identity revalidated"))));
        EXPECT_THAT(runner_.calls, IsEmpty());
        EXPECT_TRUE(report.canProceed());
    }
}

TEST_F(RecordedMacPreflight, AWholeDiskIsScannedOnEveryMountedVolumeAndAFailedScanNeverPasses) {
    StorageVolume photos;
    photos.mountPoint = "/Volumes/Elements";
    StorageVolume unreadable;
    unreadable.mountPoint = "/Volumes/Other";
    const DiskOperationPreflight preflight(runner_, "/Applications/Velmora.app");
    const auto report = preflight.run(Op::unmount, diskopstest::externalDisk(), {photos, unreadable}, TimePoint{});
    EXPECT_EQ(report.processes.size(), 3u);
    EXPECT_TRUE(runner_.ranWith(LsofOpenFiles::arguments("/Volumes/Other")));

    // lsof cannot run for /Volumes/Other: not knowing who holds files is not a pass.
    const auto other = with(elements(), [](DiskObject& o) { o.mountPoint = "/Volumes/Other"; });
    EXPECT_THAT(
        run(Op::unmount, other).checks,
        Contains(AllOf(Field(&PreflightCheck::title, "Files in use"), Field(&PreflightCheck::status, Status::fail),
                       Field(&PreflightCheck::detail, HasSubstr("Could not list the open files on "
                                                                "/Volumes/Other")))));
}

// The real thing: a loop-mounted ext4 image, a child holding one file open on it and this test
// holding another, read through the live lister of this system.
TEST(LoopVolumePreflight, FilesHeldOpenOnARealVolumeStopAnUnmount) {
    const testing::LoopVolume volume;
    if (!volume.mounted()) GTEST_SKIP() << volume.skipReason();
    const std::string held = volume.mountPoint() + "/held.txt";
    const std::string ours = volume.mountPoint() + "/ours.txt";
    std::ofstream(held) << "held";
    testing::ChildProcess holder({"/bin/sh", "-c", "exec 3<\"$0\"; exec sleep 30", held});
    // Opened after the child starts, so that the child does not inherit it.
    std::ofstream ownFile(ours);
    ownFile << "ours" << std::flush;

    ScriptedRunner runner;  // no identity answers: only the open-file checks matter here
    const auto lister = liveOpenFileListing(runner);
    const DiskOperationPreflight preflight(runner, *lister, "/usr/local/bin/velmora", Platform::linux);
    auto target = with(diskopstest::externalVolume(), [&](DiskObject& o) { o.mountPoint = volume.mountPoint(); });
    PreflightReport report;
    ASSERT_TRUE(testing::eventually([&] {
        report = preflight.run(Op::unmount, target, {}, TimePoint{});
        return std::any_of(report.processes.begin(), report.processes.end(),
                           [&](const ProcessUsage& usage) { return usage.pid == holder.pid() && usage.path == held; });
    }));
    EXPECT_THAT(report.checks, Contains(fail("Files in use",
                                             "1 open file(s) by sleep. Quit them first; "
                                             "force-unmount is never used.")));
    EXPECT_THAT(report.checks, Contains(Field(&PreflightCheck::title, "This app's own files")));
    EXPECT_THAT(report.processes,
                Contains(AllOf(Field(&ProcessUsage::pid, currentProcessID()), Field(&ProcessUsage::path, ours))));
    EXPECT_FALSE(report.canProceed());
}

}  // namespace
}  // namespace corvel
