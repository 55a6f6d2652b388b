// What an account reads from the kernel besides tool output: the mount table, a mount's
// capacity and the swap areas. Live answers come from platform/<os>/, recorded ones from
// RecordedAccountingSources, test answers from a fake.
//
//   auto sources = liveAccountingSources();
//   StorageAccount account = VolumeAccounting::read("/", *sources, runner, summary);
#pragma once

#include "storage/MountTableReading.h"

#include <memory>
#include <string>

namespace corvel {

class AccountingSources : public MountTableReading {
public:
    // The text of /proc/swaps; throws std::runtime_error when it cannot be read.
    virtual std::string swaps() = 0;
};

// The machine this program runs on.
std::unique_ptr<AccountingSources> liveAccountingSources();

}  // namespace corvel
