// Turns one storage snapshot into a diagnostic report: each rule looks at one disk or one volume
// and, when it fires, explains what is wrong in words a developer can act on. Pure: no I/O, no
// state beyond the thresholds it was built with, never throws; missing data makes a rule not fire.
//
//   DiagnosticEngine engine(settings.thresholds);
//   DiagnosticReport report = engine.evaluate(snapshot);
#pragma once

#include "diagnostics/DiagnosticReport.h"
#include "diagnostics/DiagnosticThresholds.h"
#include "diagnostics/Finding.h"
#include "storage/PhysicalDisk.h"
#include "storage/StorageSnapshot.h"
#include "storage/StorageVolume.h"

#include <optional>
#include <vector>

namespace corvel {

struct DiagnosticEngine {
    DiagnosticThresholds thresholds;

    explicit DiagnosticEngine(DiagnosticThresholds limits = DiagnosticThresholds::standard())
        : thresholds(limits) {}

    // Disk findings in disk order, then volume findings in volume order, sorted into report
    // order; the report is dated with the snapshot's capture time, not the time of evaluation.
    DiagnosticReport evaluate(const StorageSnapshot& snapshot) const;

    // SMART failing or invisible, then the NVMe wear, spare, media-error and temperature rules.
    std::vector<Finding> diskFindings(const PhysicalDisk& disk) const;
    // Free space, read-only, non-native file system, ignored ownership, missing encryption.
    std::vector<Finding> volumeFindings(const StorageVolume& volume) const;
    std::optional<Finding> freeSpaceFinding(const StorageVolume& volume) const;
};

}  // namespace corvel
