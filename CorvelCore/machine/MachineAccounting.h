// The storage account of one volume of the machine being looked at: the volume a person names
// (its mount point, a folder on it, its identifier or name; by default the boot volume), read
// live or from the recording, with the last space scan from the data folder. On a Mac the
// account covers the volume's APFS container; on Linux the mounted file system. Shared by
// `velmora accounting`, the snapshot lines of `velmora status` and the insights.
//
//   auto volume = MachineAccounting::chooseVolume(machine.snapshot(), "/home");
//   if (volume) { StorageAccount account = MachineAccounting::read(machine, snapshot, *volume); }
#pragma once

#include "accounting/SnapshotShare.h"
#include "accounting/StorageAccount.h"
#include "machine/Machine.h"
#include "storage/StorageSnapshot.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel::MachineAccounting {

// Absent when nothing matches: a name or identifier must match exactly, an absolute path picks
// the volume holding it. Without `typed`, the boot volume (else the one mounted at "/").
std::optional<StorageVolume> chooseVolume(const StorageSnapshot& snapshot, const std::optional<std::string>& typed);

// Never throws: what could not be read is in the account's warnings.
StorageAccount read(Machine& machine, const StorageSnapshot& snapshot, const StorageVolume& volume);

// The volumes whose snapshots have a known size, with the share they hold. Only file systems
// that report what a snapshot holds are read (btrfs); APFS does not, so a Mac has none.
std::vector<SnapshotShare> snapshotShares(Machine& machine, const StorageSnapshot& snapshot);

}  // namespace corvel::MachineAccounting
