// The disk operations screen's state: the objects of the last refresh an operation could act on,
// what each offers and why not, the preflight of the operation chosen, check by check, and the
// audit log. Every decision is the core's: the policy, the preflight, the attempt and the log are
// the ones `velmora ops` uses. Running needs the disk operations consent and a report that can
// proceed; the view asks the person before it calls run().
//
//   model.setSnapshot(refresh.snapshot);           // gathers the targets on a pool thread
//   model.select(0);
//   model.preflight(DiskOperation::unmount);       // reportChanged() when done
//   if (model.report()->canProceed() && askPerson(model.confirmationText())) model.run();
#pragma once

#include "diskops/OperationAuditLog.h"
#include "diskops/OperationAvailability.h"
#include "diskops/PreflightReport.h"
#include "machine/DiskOperationTargets.h"

#include <QObject>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class CoreSession;

class DiskOpsModel : public QObject {
    Q_OBJECT
public:
    explicit DiskOpsModel(CoreSession& session, QObject* parent = nullptr);

    void setSnapshot(StorageSnapshot snapshot);
    bool isLoaded() const { return loaded_; }
    bool isBusy() const { return busy_; }

    // Volumes first, then whole disks, in snapshot order.
    const std::vector<DiskOperationTarget>& targets() const { return targets_; }
    void select(int index);
    int selected() const { return selected_; }
    const DiskOperationTarget* target() const;
    // The applicable operations of the selected object, enabled or with their reason.
    std::vector<OperationAvailability> availability() const;

    void preflight(DiskOperation operation);
    const std::optional<PreflightReport>& report() const { return report_; }
    // "Unmount Volume disk4s1 (Backup)?": the question naming the target, for the confirmation.
    QString confirmationText() const;
    // Why run() would refuse now (no report, a failed check, no consent); absent when it may run.
    std::optional<std::string> runRefusal() const;
    // Carries out the preflighted operation once, logs it, then reloads the log.
    void run();
    const std::optional<OperationAuditLog::Entry>& outcome() const { return outcome_; }

    // Newest first.
    const std::vector<OperationAuditLog::Entry>& log() const { return log_; }
    const std::optional<std::string>& logProblem() const { return logProblem_; }
    const std::string& error() const { return error_; }

Q_SIGNALS:
    void changed();

private:
    void reloadLog();

    CoreSession& session_;
    std::vector<DiskOperationTarget> targets_;
    int selected_ = -1;
    std::optional<PreflightReport> report_;
    std::optional<OperationAuditLog::Entry> outcome_;
    std::vector<OperationAuditLog::Entry> log_;
    std::optional<std::string> logProblem_;
    std::string error_;
    bool loaded_ = false;
    bool busy_ = false;
};

}  // namespace corvel::desktop
