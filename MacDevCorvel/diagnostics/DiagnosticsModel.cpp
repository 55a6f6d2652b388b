#include "diagnostics/DiagnosticsModel.h"

namespace corvel::desktop {

void DiagnosticsModel::setDiagnosis(MachineDiagnosis diagnosis) {
    diagnosis_ = std::move(diagnosis);
    loaded_ = true;
    Q_EMIT changed();
}

void DiagnosticsModel::setSeverityFilter(std::optional<Severity> severity) {
    if (filter_ == severity) return;
    filter_ = severity;
    Q_EMIT changed();
}

std::vector<Finding> DiagnosticsModel::visibleFindings() const {
    std::vector<Finding> visible;
    for (const auto& finding : diagnosis_.report.findings)
        if (!filter_ || finding.severity == *filter_) visible.push_back(finding);
    return visible;
}

}  // namespace corvel::desktop
