// A reviewable plan for the operations that are never executed (formatting a disk, adding an APFS
// volume): what blocks it, what data is at risk, the steps, a command the person may review and
// run themselves, and how to undo it. Velmora never runs any of it.
//
//   OperationPlan plan = OperationPlan::format(disk, snapshot.volumesOn(physicalDisk), "Backup", appPath);
//   if (!plan.blockers.empty()) ... the plan must not be followed
#pragma once

#include "common/Json.h"
#include "common/Platform.h"
#include "diskops/DiskObject.h"
#include "storage/StorageVolume.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct OperationPlan {
    std::string title;
    DiskObject target;
    std::vector<std::string> blockers;
    std::vector<std::string> dataAtRisk;
    std::vector<std::string> steps;
    std::optional<std::string> commandForReview;  // shown, never run
    std::string rollback;

    // `appBundlePath`: where the running application lives. On Linux no command is offered: the
    // disk tool's erase command does not exist there.
    static OperationPlan format(const DiskObject& disk, const std::vector<StorageVolume>& volumes,
                                const std::string& name, const std::string& appBundlePath,
                                Platform platform = Platform::macos);
    static OperationPlan addAPFSVolume(const DiskObject& container, const std::string& name);

    bool operator==(const OperationPlan&) const = default;
};

CORVEL_JSON_RECORD(OperationPlan, title, target, blockers, dataAtRisk, steps, commandForReview, rollback)

}  // namespace corvel
