// The one entry every front end uses for "the storage of this machine": the live platform, or
// a recorded machine replayed through the same parsers and discovery.
//
//   StorageSnapshot snapshot = MachineStorage::snapshot(ctx.runner(20), ctx.recording(), ctx.now());
#pragma once

#include "command/CommandRunning.h"
#include "common/ISO8601.h"
#include "storage/RecordedMachine.h"
#include "storage/StorageSnapshot.h"

namespace corvel::MachineStorage {

// The runner is the recorded one when `recording` is given. A recording of a macOS machine
// replays the disk tool and its recorded volume list; one of a Linux machine replays lsblk,
// smartctl and its recorded mount table. Never throws: problems become snapshot warnings.
StorageSnapshot snapshot(CommandRunning& runner, const RecordedMachine* recording, TimePoint now);

// Discovery of a recording alone (what `snapshot` does when given one).
StorageSnapshot replay(CommandRunning& runner, const RecordedMachine& recording, TimePoint now);

}  // namespace corvel::MachineStorage
