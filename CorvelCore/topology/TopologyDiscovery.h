// Topology discovery from a given source, shared by the live platforms and by recorded machines.
// A Linux recording names its recorded sysfs tree under "sysfs" (a folder beside machine.json);
// a macOS recording replays the hardware-report tool's commands and names its registry chains
// under "ioRegistry" ({"disk4": [entry, …]}).
//
//   SysfsTree sysfs("/");
//   TopologyReading reading = TopologyDiscovery::fromSysfs(sysfs, snapshot.disks);
//   TopologyReading replayed = TopologyDiscovery::replay(runner, recording, snapshot);
#pragma once

#include "command/CommandRunning.h"
#include "storage/RecordedMachine.h"
#include "storage/StorageSnapshot.h"
#include "topology/SysfsReading.h"
#include "topology/TopologyReading.h"

#include <filesystem>
#include <optional>

namespace corvel::TopologyDiscovery {

inline constexpr const char* sysfsKey = "sysfs";
inline constexpr const char* registryKey = "ioRegistry";

TopologyReading fromSysfs(SysfsReading& sysfs, const std::vector<PhysicalDisk>& disks);

// Never throws; a recording without the keys above reports that as a warning.
TopologyReading replay(CommandRunning& runner, const RecordedMachine& recording, const StorageSnapshot& snapshot);

// The recorded sysfs folder of a Linux recording, when it names one that exists.
std::optional<std::filesystem::path> recordedSysfs(const RecordedMachine& recording, std::string* problem = nullptr);

}  // namespace corvel::TopologyDiscovery
