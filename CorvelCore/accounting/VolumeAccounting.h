// Reads the account of one mounted Linux volume: its capacity from statvfs, the blocks kept back
// from ordinary users, btrfs metadata and snapshots (through BtrfsClient), swap files on it and
// what the last space scan saw there, then closes the split with the remainder. Never throws:
// a listing that fails or cannot be decoded becomes one warning, and its row reads unknown.
//
//   auto sources = liveAccountingSources();
//   StorageAccount account = VolumeAccounting::read("/", *sources, runner, SpaceSummary::load(dataDir));
#pragma once

#include "accounting/AccountingSources.h"
#include "accounting/StorageAccount.h"
#include "command/CommandRunning.h"
#include "space/SpaceSummary.h"

#include <optional>
#include <string>

namespace corvel::VolumeAccounting {

StorageAccount read(const std::string& mountPoint, AccountingSources& sources, CommandRunning& runner,
                    const std::optional<SpaceSummary>& lastScan);

}  // namespace corvel::VolumeAccounting
