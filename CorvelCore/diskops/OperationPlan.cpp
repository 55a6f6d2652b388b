#include "diskops/OperationPlan.h"

#include "common/ByteFormat.h"
#include "common/Text.h"

namespace corvel {
namespace {

std::string withoutDoubleQuotes(const std::string& name) {
    return replaceAll(name, "\"", "");
}

}  // namespace

OperationPlan OperationPlan::format(const DiskObject& disk, const std::vector<StorageVolume>& volumes,
                                    const std::string& name, const std::string& appBundlePath, Platform platform) {
    OperationPlan plan;
    plan.target = disk;
    if (disk.isInternal) plan.blockers.push_back("Internal disk: formatting is permanently blocked.");
    if (disk.isBootVolume) plan.blockers.push_back("This disk hosts the startup volume.");
    for (const auto& volume : volumes) {
        if (startsWith(appBundlePath, volume.mountPoint + "/")) {
            plan.blockers.push_back("Velmora runs from this disk.");
            break;
        }
    }
    for (const auto& volume : volumes)
        plan.dataAtRisk.push_back(volume.name + " — " + ByteFormat::string(volume.usedBytes()) + " used at " +
                                  volume.mountPoint);
    if (volumes.empty()) plan.dataAtRisk.push_back("No mounted volumes found; unmounted partitions may still hold data.");

    const auto cleanedName = withoutDoubleQuotes(name);
    plan.title = "Prepare formatting of " + disk.name;
    plan.steps = {
        "Back up every volume listed under data at risk and verify the backup opens.",
        "Confirm the disk identity (" + disk.identifier + ", " + ByteFormat::string(disk.sizeBytes) +
            ") in Disk Utility.",
        "Quit apps, Docker and terminals using the disk.",
        "Erase in Disk Utility, or review the command below in Terminal yourself.",
        "Re-run Velmora diagnostics on the new volume.",
    };
    if (!disk.isInternal && platform == Platform::macos)
        plan.commandForReview = "diskutil eraseDisk APFS \"" + cleanedName + "\" GPT " + disk.identifier;
    plan.rollback = "None. Erasing destroys all data on the disk; only a backup can restore it.";
    return plan;
}

OperationPlan OperationPlan::addAPFSVolume(const DiskObject& container, const std::string& name) {
    const auto cleanedName = withoutDoubleQuotes(name);
    OperationPlan plan;
    plan.title = "Add APFS volume “" + cleanedName + "” on " + container.identifier;
    plan.target = container;
    if (container.isInternal) plan.blockers.push_back("Internal startup container is protected.");
    plan.dataAtRisk = {"None expected: existing volumes are untouched; new volume shares the container's free space."};
    plan.steps = {
        "Check the container's free space in Topology.",
        "Run the command below in Terminal, or use Disk Utility › Add APFS Volume.",
        "Verify the new volume mounts and appears in Velmora.",
    };
    if (!container.isInternal)
        plan.commandForReview = "diskutil apfs addVolume " + container.identifier + " APFS \"" + cleanedName + "\"";
    plan.rollback = "diskutil apfs deleteVolume <new volume identifier> (removes only the new, empty volume)";
    return plan;
}

}  // namespace corvel
