// The diagnostics screen's state: the findings of the last refresh, most serious first as the
// engine orders them, and the severity the person chose to look at.
//
//   model.setDiagnosis(refresh.diagnosis);
//   model.setSeverityFilter(Severity::warning);
//   for (const auto& finding : model.visibleFindings()) { ... }
#pragma once

#include "machine/MachineDiagnosis.h"

#include <QObject>
#include <optional>
#include <vector>

namespace corvel::desktop {

class DiagnosticsModel : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    void setDiagnosis(MachineDiagnosis diagnosis);
    // Absent: every finding.
    void setSeverityFilter(std::optional<Severity> severity);

    bool isLoaded() const { return loaded_; }
    const MachineDiagnosis& diagnosis() const { return diagnosis_; }
    std::optional<Severity> severityFilter() const { return filter_; }
    std::vector<Finding> visibleFindings() const;

Q_SIGNALS:
    void changed();

private:
    MachineDiagnosis diagnosis_;
    std::optional<Severity> filter_;
    bool loaded_ = false;
};

}  // namespace corvel::desktop
