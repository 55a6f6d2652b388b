// How `velmora ops` shows disk objects, availability, preflight reports, outcomes, plans and the
// audit log to people. Names and paths go through terminalSafe; JSON output does not come here.
#pragma once

#include "CliContext.h"
#include "diskops/DiskObject.h"
#include "diskops/OperationAuditLog.h"
#include "diskops/OperationAvailability.h"
#include "diskops/OperationPlan.h"
#include "diskops/PreflightReport.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace corvel::cli {

// "Unmount Volume disk4s1 (Backup)? [y/N]"; a new folder names itself: "New Folder “Exports” in …".
std::string confirmationQuestion(DiskOperation operation, const DiskObject& target,
                                 const std::optional<std::string>& folderName);

void printTarget(CliContext& context, const DiskObject& object);
void printAvailability(CliContext& context, const std::vector<OperationAvailability>& availability);
void printPreflight(CliContext& context, const PreflightReport& report);
void printOutcome(CliContext& context, const OperationAuditLog::Entry& entry);
void printPlan(CliContext& context, const OperationPlan& plan);
// `entries` newest first, already cut to the limit; `total` counts them all.
void printLog(CliContext& context, const std::filesystem::path& file,
              const std::vector<OperationAuditLog::Entry>& entries, std::size_t total);

}  // namespace corvel::cli
