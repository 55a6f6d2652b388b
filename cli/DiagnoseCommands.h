// Diagnosis for the command line: the report and the five health dimensions of one snapshot,
// judged with the user's settings, and the ways `status`, `diagnose` and `health` print them.
//
//   const auto diagnosis = diagnose(context, snapshot);
//   printHealthSummary(context, diagnosis);            // under the disks and volumes of `status`
//   addDiagnosisJson(document, diagnosis);             // adds "report" and "health"
#pragma once

#include "CliContext.h"
#include "common/Json.h"
#include "diagnostics/CorvelSettings.h"
#include "machine/MachineDiagnosis.h"
#include "storage/StorageSnapshot.h"

#include <vector>

namespace corvel::cli {

// Evaluates `snapshot` with the user's settings; the connection dimension is unknown without
// `topologies` (MachineTopology::read).
MachineDiagnosis diagnose(CliContext& context, const StorageSnapshot& snapshot,
                          const std::vector<DeviceTopology>& topologies = {});

// Overall severity, health score, one line per dimension, then the findings that need action.
void printHealthSummary(CliContext& context, const MachineDiagnosis& diagnosis);

// The headline, then detail, recommendation, evidence and impact, indented under it.
void printFinding(CliContext& context, const Finding& finding);

void addDiagnosisJson(Json& document, const MachineDiagnosis& diagnosis);

}  // namespace corvel::cli
