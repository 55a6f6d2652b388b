// Discovery on the machine this program runs on. One implementation per platform lives under
// platform/<os>/, chosen by the build; nothing above this line knows which one it got.
#pragma once

#include "command/CommandRunning.h"
#include "common/ISO8601.h"
#include "storage/StorageSnapshot.h"

namespace corvel::PlatformStorage {

// Never throws.
StorageSnapshot discover(CommandRunning& runner, TimePoint now);

}  // namespace corvel::PlatformStorage
