// One refresh of the machine being looked at, the same for every front end: discovery builds the
// snapshot, the diagnostic engine judges it under the settings, and the health dimensions follow.
// The command line's `status`, the background agent and the desktop application all call this,
// so they can never disagree about the same machine.
//
//   RefreshCycle::Result refresh = RefreshCycle::run(machine, settings);
//   show(refresh.snapshot, refresh.diagnosis.report);
//   for (const auto& warning : refresh.warnings) log(warning);
#pragma once

#include "diagnostics/CorvelSettings.h"
#include "machine/Machine.h"
#include "machine/MachineDiagnosis.h"
#include "storage/StorageSnapshot.h"

#include <string>
#include <vector>

namespace corvel::RefreshCycle {

struct Result {
    StorageSnapshot snapshot;
    MachineDiagnosis diagnosis;
    std::vector<std::string> warnings;  // problems of the cycle itself, beyond the snapshot's own
};

// Never throws: discovery turns tool failures into snapshot warnings.
Result run(Machine& machine, const CorvelSettings& settings);

}  // namespace corvel::RefreshCycle
