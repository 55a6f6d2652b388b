// What an account reads from the system besides tool output: the mount table, a mount's
// capacity and the swap areas on Linux, a volume's purgeable space on macOS. Live answers come from platform/<os>/,
// recorded ones from RecordedAccountingSources, test answers from a fake.
//
//   auto sources = liveAccountingSources();
//   StorageAccount account = VolumeAccounting::read("/", *sources, runner, summary);
#pragma once

#include "storage/MountTableReading.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace corvel {

class AccountingSources : public MountTableReading {
public:
    // The text of /proc/swaps; throws std::runtime_error when it cannot be read.
    virtual std::string swaps() = 0;
    // Space the system would free for important use (caches, purgeable snapshots) on the volume
    // mounted there; absent where the platform does not report it.
    virtual std::optional<std::int64_t> purgeableBytes(const std::string& mountPoint) {
        (void)mountPoint;
        return std::nullopt;
    }
};

// The machine this program runs on.
std::unique_ptr<AccountingSources> liveAccountingSources();

}  // namespace corvel
