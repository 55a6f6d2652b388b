// One confirmed disk operation carried out and described for the audit log: the executor runs it
// (or, for a new folder, makes the folder) and whatever happens becomes the entry's outcome.
// Nothing is written here; the caller records the entry, after showing the outcome.
//
//   auto entry = OperationAttempt::run(executor, report, std::nullopt, [&] { return machine.now(); });
//   show(entry.outcome);
//   log.record(entry);
#pragma once

#include "common/ISO8601.h"
#include "diskops/DiskOperationExecutor.h"
#include "diskops/OperationAuditLog.h"
#include "diskops/PreflightReport.h"

#include <functional>
#include <optional>
#include <string>

namespace corvel::OperationAttempt {

// Runs `report.operation` on `report.target` as confirmed. `folderName` is the name typed for a
// new folder. `now` is read once the outcome is known. Never throws: a failure is an entry with
// `succeeded` false and the error's description as its outcome.
OperationAuditLog::Entry run(const DiskOperationExecutor& executor, const PreflightReport& report,
                             const std::optional<std::string>& folderName, const std::function<TimePoint()>& now);

}  // namespace corvel::OperationAttempt
