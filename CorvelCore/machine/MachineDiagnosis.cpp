#include "machine/MachineDiagnosis.h"

#include "diagnostics/DiagnosticEngine.h"
#include "diagnostics/HealthAssessment.h"

namespace corvel {

MachineDiagnosis MachineDiagnosis::of(const StorageSnapshot& snapshot, const CorvelSettings& settings,
                                      const std::vector<DeviceTopology>& topologies) {
    MachineDiagnosis diagnosis;
    diagnosis.report = DiagnosticEngine(settings.thresholds).evaluate(snapshot);
    diagnosis.health = HealthAssessment::assess(snapshot, diagnosis.report, topologies, settings.expectedVolumes,
                                                settings.verifiedVolumes);
    return diagnosis;
}

MachineDiagnosis::Overall MachineDiagnosis::overall() const {
    Overall result{report.overallSeverity(), std::nullopt};
    for (const auto& assessment : health) {
        const Severity severity = assessment.status == HealthStatus::critical    ? Severity::critical
                                  : assessment.status == HealthStatus::attention ? Severity::warning
                                                                                 : Severity::ok;
        if (severity > result.severity) result = {severity, assessment.dimension};
    }
    return result;
}

}  // namespace corvel
