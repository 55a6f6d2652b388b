// The live I/O registry: for a disk's BSD name, the registry entries from its media object up to
// the root, with the few properties the topology reads. Decisions about them live in
// topology/RegistryPath; this file only asks the registry.
#pragma once

#include "topology/DeviceRegistryReading.h"

namespace corvel {

class IORegistryReader : public DeviceRegistryReading {
public:
    std::optional<std::vector<RegistryEntry>> ancestors(const std::string& bsdName) override;
};

}  // namespace corvel
