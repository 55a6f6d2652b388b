// Which operations are offered for which object, and the fences that hold whatever the object:
// no argument list that can pass the executor's policies carries "force", and internal or startup
// disks are never ejected, formatted or given a volume.
#include "DiskObjects.h"
#include "command/CommandError.h"
#include "common/Text.h"
#include "diskops/DiskOperationError.h"
#include "diskops/DiskOperationExecutor.h"
#include "diskops/DiskOperationPolicy.h"
#include "support/ScriptedRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using diskopstest::externalDisk;
using diskopstest::externalVolume;
using diskopstest::with;
using ::testing::IsEmpty;
using Op = DiskOperation;

struct AvailabilityCase {
    const char* name;
    DiskObject object;
    DiskOperation operation;
    bool applicable;
    bool enabled;
    std::optional<std::string> reason;
    Platform platform = Platform::macos;
    std::string appPath = "/usr/local/bin/velmora";
};

const std::optional<std::string> none;  // offered without a reason, or not offered at all
const std::string runningFromVolume =
    "Velmora is running from this volume. Quit it and run it from another disk first.";

TEST(DiskOperationPolicy, OffersEachOperationForTheRightObjectsWithTheReasonPeopleRead) {
    const auto unmounted = with(externalVolume(), [](DiskObject& o) { o.mountPoint.reset(); });
    const auto network = with(externalVolume(), [](DiskObject& o) { o.isNetwork = true; });
    const auto startup = with(externalVolume(), [](DiskObject& o) {
        o.isBootVolume = o.isInternal = true;
        o.isEjectable = false;
    });
    const auto root = with(externalVolume(), [](DiskObject& o) { o.mountPoint = "/"; });
    const auto partition = with(unmounted, [](DiskObject& o) { o.kind = DiskObjectKind::partition; });
    const auto mountPoint = with(externalVolume(), [](DiskObject& o) { o.kind = DiskObjectKind::mountPoint; });
    const auto readOnly = with(externalVolume(), [](DiskObject& o) { o.isWritable = false; });
    const auto fixedDisk = with(externalDisk(), [](DiskObject& o) { o.isEjectable = false; });
    const auto bootDisk = with(externalDisk(), [](DiskObject& o) { o.isBootVolume = true; });
    const auto container = with(externalDisk(), [](DiskObject& o) { o.kind = DiskObjectKind::apfsContainer; });
    const auto internalContainer = with(container, [](DiskObject& o) { o.isInternal = true; });

    const std::vector<AvailabilityCase> cases{
        {"mounted volume: mount", externalVolume(), Op::mount, false, false, none},
        {"unmounted volume: mount", unmounted, Op::mount, true, true, none},
        {"mounted whole disk: mount", externalDisk(), Op::mount, true, true, none},
        {"network volume: mount", with(network, [](DiskObject& o) { o.mountPoint.reset(); }), Op::mount, false, false,
         none},
        {"startup volume: unmount", startup, Op::unmount, true, false, "The startup disk can't be unmounted."},
        {"app on the volume: unmount", externalVolume(), Op::unmount, true, false, runningFromVolume, Platform::macos,
         "/Volumes/Backup/bin/velmora"},
        {"app at the volume's path itself", externalVolume(), Op::unmount, true, false, runningFromVolume,
         Platform::macos, "/Volumes/Backup"},
        {"sibling path is not the volume", externalVolume(), Op::unmount, true, true, none, Platform::macos,
         "/Volumes/Backup2/velmora"},
        {"root never counts as running from", root, Op::unmount, true, true, none},
        {"unmounted partition: unmount", partition, Op::unmount, false, false, none},
        {"whole disk: unmount", externalDisk(), Op::unmount, true, true, none},
        {"mount point: unmount", mountPoint, Op::unmount, true, true, none},
        {"startup volume: eject", startup, Op::eject, true, false, "Internal and startup disks can't be ejected."},
        {"app on the disk: eject", externalDisk(), Op::eject, true, false,
         "Velmora is running from this disk. Quit it and run it from another disk first.", Platform::macos,
         "/Volumes/Backup/velmora"},
        {"fixed disk: eject", fixedDisk, Op::eject, true, false, "macOS reports this device as not ejectable."},
        {"fixed disk on Linux: eject", fixedDisk, Op::eject, true, false, "Linux reports this device as not ejectable.",
         Platform::linux},
        {"partition: eject", partition, Op::eject, false, false, none},
        {"network volume: eject", network, Op::eject, false, false, none},
        {"external volume: eject", externalVolume(), Op::eject, true, true, none},
        {"mounted volume: verify", externalVolume(), Op::verifyVolume, true, true, none},
        {"mounted volume on Linux: verify", externalVolume(), Op::verifyVolume, true, false,
         "Linux checks a file system only while it is unmounted. Unmount it first.", Platform::linux},
        {"unmounted volume on Linux: verify", unmounted, Op::verifyVolume, true, true, none, Platform::linux},
        {"network volume: verify", network, Op::verifyVolume, false, false, none},
        {"volume: repair", externalVolume(), Op::firstAid, true, false,
         "Repair writes file-system metadata. It needs a privileged helper and separate approval; use Disk "
         "Utility › First Aid meanwhile."},
        {"network volume: repair", network, Op::firstAid, false, false, none},
        {"read-only volume: new folder", readOnly, Op::createDirectory, true, false, "The volume is read-only."},
        {"mount point: new folder", mountPoint, Op::createDirectory, true, true, none},
        {"unmounted volume: new folder", unmounted, Op::createDirectory, false, false, none},
        {"container: add volume", container, Op::createAPFSVolume, true, false,
         "Adding volumes needs a privileged helper, tests and separate approval. A plan can be prepared."},
        {"internal container: add volume", internalContainer, Op::createAPFSVolume, true, false,
         "Changing the internal startup container is not allowed."},
        {"volume: add volume", externalVolume(), Op::createAPFSVolume, false, false, none},
        {"external disk: format plan", externalDisk(), Op::prepareFormat, true, true,
         "Produces a plan only. Nothing is erased."},
        {"disk hosting startup: format plan", bootDisk, Op::prepareFormat, true, false,
         "Internal and startup disks can never be erased or formatted."},
        {"volume: format plan", externalVolume(), Op::prepareFormat, false, false, none},
    };
    for (const auto& c : cases) {
        const auto availability = DiskOperationPolicy::availability(c.operation, c.object, c.appPath, c.platform);
        EXPECT_EQ(availability, (OperationAvailability{c.operation, c.applicable, c.enabled, c.reason})) << c.name;
    }
}

// Every object the flags can describe, of every kind, on both platforms.
std::vector<DiskObject> everyObject() {
    std::vector<DiskObject> objects;
    for (const auto kind : allCases<DiskObjectKind>())
        for (int flags = 0; flags < 32; ++flags) {
            auto object = kind == DiskObjectKind::physicalDisk ? externalDisk() : externalVolume();
            object.kind = kind;
            object.isInternal = flags & 1;
            object.isBootVolume = flags & 2;
            object.isNetwork = flags & 4;
            if (flags & 8) object.mountPoint.reset();
            object.isEjectable = flags & 16;
            objects.push_back(object);
        }
    return objects;
}

TEST(DiskOperationExecutorFence, NoArgumentListForAnyOperationOrObjectCarriesForce) {
    const LinuxDiskCommands::DiskMembers members{{"sdb2", "sdb1"}, {"sdb3"}};
    int checked = 0;
    for (const auto platform : allCases<Platform>()) {
        testing::ScriptedRunner runner;
        const DiskOperationExecutor executor(runner, platform, members);
        for (const auto& object : everyObject())
            for (const auto operation : allCases<DiskOperation>()) {
                std::vector<DiskCommand> commands;
                try {
                    commands = executor.commands(operation, object);
                } catch (const DiskOperationError& error) {
                    EXPECT_TRUE(!isExecutableInThisBuild(operation) || operation == Op::createDirectory)
                        << label(platform) << " " << rawValue(operation) << ": " << error.description();
                    continue;
                }
                for (const auto& command : commands) {
                    EXPECT_TRUE(command.policy->permits(command.arguments)) << rawValue(operation);
                    for (const auto& argument : command.arguments) {
                        EXPECT_THAT(toLower(argument), ::testing::Not(::testing::HasSubstr("force")));
                        EXPECT_NE(argument, "-f");
                    }
                    ++checked;
                }
            }
    }
    EXPECT_GT(checked, 500);
    // A device that happens to be called "force" is still never handed to a tool.
    const auto named = with(externalVolume(), [](DiskObject& o) {
        o.identifier = "FORCE";
        o.mountPoint.reset();
    });
    testing::ScriptedRunner runner;
    runner.answer({"mount", "FORCE"}, std::string("mounted"));
    const DiskOperationExecutor executor(runner);
    EXPECT_THROW(executor.run(Op::mount, named, PreflightReport{Op::mount, named, {}, {}, {}}, true), CommandError);
    EXPECT_THAT(runner.calls, IsEmpty());
    EXPECT_FALSE(DiskOperationExecutor::policy().permits({"eraseDisk", "APFS", "X", "disk4"}));
}

TEST(DiskOperationExecutorFence, InternalOrStartupDisksAreNeverEjectedFormattedOrGivenAVolume) {
    for (const auto platform : allCases<Platform>())
        for (const auto& object : everyObject()) {
            if (!object.isInternal && !object.isBootVolume) continue;
            for (const auto operation : {Op::eject, Op::prepareFormat, Op::createAPFSVolume}) {
                const auto availability =
                    DiskOperationPolicy::availability(operation, object, "/opt/velmora", platform);
                EXPECT_FALSE(availability.isEnabled) << rawValue(object.kind) << " " << rawValue(operation);
                // Even with a report that claims everything passed, nothing runs.
                testing::ScriptedRunner runner;
                runner.answer({"eject", object.identifier}, std::string("ejected"));
                const DiskOperationExecutor executor(runner, platform);
                const PreflightReport passing{operation, object, {}, {}, {}};
                EXPECT_THROW(executor.run(operation, object, passing, true), DiskOperationError);
                EXPECT_THAT(runner.calls, IsEmpty()) << rawValue(object.kind) << " " << rawValue(operation);
            }
        }
}

}  // namespace
}  // namespace corvel
