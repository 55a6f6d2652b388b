// The judgement of one snapshot under the user's settings: the diagnostic report and the five
// health dimensions. Shared by `status`, `diagnose`, `health`, the agent and the dashboard.
//
//   auto diagnosis = MachineDiagnosis::of(snapshot, settings, topologies);
#pragma once

#include "diagnostics/CorvelSettings.h"
#include "diagnostics/DeviceTopology.h"
#include "diagnostics/DiagnosticReport.h"
#include "diagnostics/DimensionAssessment.h"
#include "storage/StorageSnapshot.h"

#include <optional>
#include <vector>

namespace corvel {

struct MachineDiagnosis {
    DiagnosticReport report;
    std::vector<DimensionAssessment> health;

    // The thresholds, expected volumes and verification dates come from `settings`. Without
    // topologies the connection dimension stays unknown.
    static MachineDiagnosis of(const StorageSnapshot& snapshot, const CorvelSettings& settings,
                               const std::vector<DeviceTopology>& topologies = {});

    // The overall judgement a person should see: the report's severity, raised to the worst health
    // dimension's when that is worse (a missing expected volume is critical availability even
    // without a finding about a disk), so "Healthy" never stands beside a critical dimension.
    struct Overall {
        Severity severity = Severity::ok;
        std::optional<HealthDimension> worstDimension;  // set when a dimension raised the severity
        bool operator==(const Overall&) const = default;
    };
    Overall overall() const;

    bool operator==(const MachineDiagnosis&) const = default;
};

}  // namespace corvel
