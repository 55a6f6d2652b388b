// Condenses the diagnostic report, the device topologies and the volumes the user expects into
// five health dimensions. Its point is the difference between "no problem found" and "proven
// healthy": a dimension without proof (no drive reports SMART, no volume verified, no topology
// inspected) is `unknown`, never `normal`. Pure; no I/O, no state.
//
//   auto health = HealthAssessment::assess(snapshot, report, {}, settings.expectedVolumes,
//                                          settings.verifiedVolumes);   // five, in dimension order
#pragma once

#include "common/ISO8601.h"
#include "diagnostics/DeviceTopology.h"
#include "diagnostics/DiagnosticReport.h"
#include "diagnostics/DimensionAssessment.h"
#include "diagnostics/ExpectedVolume.h"
#include "diagnostics/Finding.h"
#include "storage/StorageSnapshot.h"

#include <map>
#include <string>
#include <vector>

namespace corvel::HealthAssessment {

// Exactly five assessments, one per HealthDimension, in dimension order. `verifiedFileSystems`
// maps a volume id to the last successful file-system verification this application ran.
std::vector<DimensionAssessment> assess(const StorageSnapshot& snapshot, const DiagnosticReport& report,
                                        const std::vector<DeviceTopology>& topologies,
                                        const std::vector<ExpectedVolume>& expectedVolumes,
                                        const std::map<std::string, TimePoint>& verifiedFileSystems);

// A critical "availability.missing" finding for each expected volume that is not mounted.
std::vector<Finding> availability(const StorageSnapshot& snapshot, const std::vector<ExpectedVolume>& expected);

// The date of a verification as the evidence shows it, in the local time zone: "Nov 2, 2026 at 09:30".
std::string verificationDateText(TimePoint time);

}  // namespace corvel::HealthAssessment
