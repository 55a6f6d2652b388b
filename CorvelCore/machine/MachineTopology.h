// The device topology of the machine being looked at: sysfs or the hardware-report tool and the
// I/O registry live, the recorded sysfs tree or recorded reports in replay. `status`, `health`
// and `topology` all read it here so the connection dimension means the same everywhere.
//
//   StorageSnapshot snapshot = machine.snapshot();
//   TopologyReading reading = MachineTopology::read(machine, snapshot);
//   auto diagnosis = MachineDiagnosis::of(snapshot, settings, reading.topologies);
#pragma once

#include "machine/Machine.h"
#include "storage/StorageSnapshot.h"
#include "topology/TopologyReading.h"

namespace corvel::MachineTopology {

// Never throws: what cannot be read becomes a warning or a disk that was not located.
TopologyReading read(Machine& machine, const StorageSnapshot& snapshot);

}  // namespace corvel::MachineTopology
