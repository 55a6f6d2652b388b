// Re-checks the target immediately before an operation: is the operation allowed, is the object
// still the one that was selected, is it protected, and which processes hold files open on it.
// Never fails: every problem becomes a failed check in a complete report.
//
//   DiskOperationPreflight preflight(runner, lister, appPath, Platform::linux);
//   PreflightReport report = preflight.run(DiskOperation::unmount, target, volumesOnDisk, now);
//   if (report.canProceed()) ... ask the person, then DiskOperationExecutor::run(...)
#pragma once

#include "command/CommandRunning.h"
#include "common/ISO8601.h"
#include "common/Platform.h"
#include "diskops/DiskIdentity.h"
#include "diskops/DiskObject.h"
#include "diskops/DiskOperation.h"
#include "diskops/PreflightReport.h"
#include "processes/CurrentProcess.h"
#include "processes/OpenFileListing.h"
#include "storage/StorageVolume.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace corvel {

class DiskOperationPreflight {
public:
    // The disk tool and lsof, both through `runner` (the macOS preflight).
    DiskOperationPreflight(CommandRunning& runner, std::string appBundlePath);
    // The platform's identity tool through `runner`; open files from `lister`. `ownProcessID` tells
    // this program's own usages from the others'.
    DiskOperationPreflight(CommandRunning& runner, OpenFileListing& lister, std::string appBundlePath,
                           Platform platform, std::int32_t ownProcessID = currentProcessID());

    // `mountedVolumesOnDisk`: the volumes on the target's physical disk, scanned when the target
    // is the whole disk.
    PreflightReport run(DiskOperation operation, const DiskObject& target,
                        const std::vector<StorageVolume>& mountedVolumesOnDisk, TimePoint now) const;

    const std::string& appBundlePath() const { return appBundlePath_; }

    // The identity check's findings: "volume UUID A ≠ B", "mount point C ≠ D"; empty when the
    // fresh facts match (a value missing on either side is no difference).
    static std::vector<std::string> identityDifferences(const DiskObject& target, const DiskIdentity& fresh);

private:
    CommandRunning& runner_;
    std::unique_ptr<OpenFileListing> ownedLister_;
    OpenFileListing* lister_;
    std::string appBundlePath_;
    Platform platform_;
    std::int32_t ownProcessID_;
};

}  // namespace corvel
