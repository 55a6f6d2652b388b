// Discovery on the machine this program runs on. One implementation per platform lives under
// platform/<os>/, chosen by the build; nothing above this line knows which one it got.
#pragma once

#include "command/CommandRunning.h"
#include "common/ISO8601.h"
#include "storage/MountTableReading.h"
#include "storage/StorageSnapshot.h"

#include <memory>

namespace corvel::PlatformStorage {

// Never throws.
StorageSnapshot discover(CommandRunning& runner, TimePoint now);

// The live mount table where the platform has one (Linux); null on macOS, whose mounted volumes
// all come from the file manager's list.
std::unique_ptr<MountTableReading> mountTable();

}  // namespace corvel::PlatformStorage
