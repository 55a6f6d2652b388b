// What the preflight found immediately before an operation: its checks in the order they were
// made and every process using files on the target. One report is consumed by one execution.
//
//   PreflightReport report = preflight.run(DiskOperation::unmount, target, {}, now);
//   if (!report.canProceed()) show(report.failures());
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "diskops/DiskObject.h"
#include "diskops/DiskOperation.h"
#include "diskops/PreflightCheck.h"
#include "processes/ProcessUsage.h"

#include <string>
#include <vector>

namespace corvel {

struct PreflightReport {
    DiskOperation operation = DiskOperation::mount;
    DiskObject target;
    std::vector<PreflightCheck> checks;
    std::vector<ProcessUsage> processes;  // the system's own usages included
    TimePoint createdAt{};

    // No check failed (an empty list can proceed).
    bool canProceed() const;
    // The details of the failed checks, in order.
    std::vector<std::string> failures() const;

    bool operator==(const PreflightReport&) const = default;
};

CORVEL_JSON_RECORD(PreflightReport, operation, target, checks, processes, createdAt)

}  // namespace corvel
