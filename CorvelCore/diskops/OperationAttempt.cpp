#include "diskops/OperationAttempt.h"

#include "command/CommandError.h"
#include "common/UUID.h"
#include "diskops/DiskOperationError.h"

namespace corvel::OperationAttempt {
namespace {

std::string outcomeOf(const DiskOperationExecutor& executor, const PreflightReport& report,
                      const std::optional<std::string>& folderName) {
    const auto& target = report.target;
    if (report.operation == DiskOperation::createDirectory) {
        if (!report.canProceed() || !target.mountPoint)
            throw DiskOperationError::preflightFailed({"Volume not writable"});
        const auto folder =
            DiskOperationExecutor::createDirectory(folderName.value_or(""), *target.mountPoint, /*confirmed=*/true);
        return "Created " + folder.string();
    }
    auto output = executor.run(report.operation, target, report, /*confirmed=*/true);
    if (output.empty()) return std::string(title(report.operation)) + " completed.";
    return output;
}

}  // namespace

OperationAuditLog::Entry run(const DiskOperationExecutor& executor, const PreflightReport& report,
                             const std::optional<std::string>& folderName, const std::function<TimePoint()>& now) {
    OperationAuditLog::Entry entry;
    try {
        entry.outcome = outcomeOf(executor, report, folderName);
        entry.succeeded = true;
    } catch (const DiskOperationError& error) {
        entry.outcome = error.description();
    } catch (const CommandError& error) {
        entry.outcome = error.description();
    } catch (const std::exception& error) {
        entry.outcome = error.what();
    }
    entry.id = UUID::random();
    entry.date = now();
    entry.operation = report.operation;
    entry.target = OperationAuditLog::targetText(report.target);
    entry.targetUUID = report.target.volumeUUID;
    entry.preflight = report.checks;
    entry.confirmed = true;
    return entry;
}

}  // namespace corvel::OperationAttempt
