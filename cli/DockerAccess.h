// Reading Docker from the command line: the live machine through its file system and the docker
// program, or a recorded machine through its recording, with the same client either way.
//
//   auto docker = readDocker(context, snapshot);
//   if (!docker.executable) { /* "Docker CLI not found" */ }
#pragma once

#include "CliContext.h"
#include "docker/DockerInventory.h"
#include "storage/StorageSnapshot.h"

#include <optional>
#include <string>

namespace corvel::cli {

// The inventory's own runner time-out: a busy engine can take a while over "system df -v".
inline constexpr double dockerTimeoutSeconds = 120;

struct DockerReading {
    std::string platform;                   // "macos" or "linux": the machine read, live or recorded
    std::optional<std::string> executable;  // none: the docker program is not installed
    std::optional<DockerInventory> inventory;
};

// Never throws for Docker's sake (failures land in the inventory's errors); a malformed
// recording is a UsageError naming it.
DockerReading readDocker(CliContext& context, const StorageSnapshot& snapshot);

// The texts shown when the engine does not answer.
std::string engineNotRunningTitle();
// The second sentence is left out when no disk image was found: there is nothing measured then.
std::string engineNotRunningHint(const std::string& platform, bool imageFound);

}  // namespace corvel::cli
