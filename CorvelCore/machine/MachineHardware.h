// The hardware summary of the machine being looked at, with the internal disk's breakdown from
// the last space scan in the data folder when that scan covered an internal disk.
//
//   HardwareSummary summary = MachineHardware::read(machine, machine.snapshot());
#pragma once

#include "hardware/HardwareSummary.h"
#include "machine/Machine.h"
#include "storage/StorageSnapshot.h"

namespace corvel::MachineHardware {

// Never throws: an unreadable report or scan summary becomes one of the summary's warnings.
HardwareSummary read(Machine& machine, const StorageSnapshot& snapshot);

}  // namespace corvel::MachineHardware
