#include "machine/RefreshCycle.h"

namespace corvel::RefreshCycle {

Result run(Machine& machine, const CorvelSettings& settings) {
    Result result;
    result.snapshot = machine.snapshot();
    result.diagnosis = MachineDiagnosis::of(result.snapshot, settings);
    return result;
}

}  // namespace corvel::RefreshCycle
