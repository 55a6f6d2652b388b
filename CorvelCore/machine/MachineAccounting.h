// The storage account of one volume of the machine being looked at: the volume a person names
// (its mount point, a folder on it, its identifier or name; by default the boot volume), read
// live or from the recording, with the last space scan from the data folder. Shared by
// `velmora accounting` and, later, the status line about snapshots.
//
//   auto volume = MachineAccounting::chooseVolume(machine.snapshot(), "/home");
//   if (volume) { StorageAccount account = MachineAccounting::read(machine, *volume); }
#pragma once

#include "accounting/StorageAccount.h"
#include "machine/Machine.h"
#include "storage/StorageSnapshot.h"

#include <optional>
#include <string>

namespace corvel::MachineAccounting {

// Absent when nothing matches: a name or identifier must match exactly, an absolute path picks
// the volume holding it. Without `typed`, the boot volume (else the one mounted at "/").
std::optional<StorageVolume> chooseVolume(const StorageSnapshot& snapshot, const std::optional<std::string>& typed);

// Why this machine's volumes cannot be accounted yet, or absent when they can.
std::optional<std::string> unavailableReason(const Machine& machine);

// Never throws: what could not be read is in the account's warnings.
StorageAccount read(Machine& machine, const StorageVolume& volume);

}  // namespace corvel::MachineAccounting
