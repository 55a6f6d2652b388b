// The device-registry reader: for a disk's BSD name ("disk4"), the registry entries from its
// media object up to the root of the machine, nearest first. One implementation reads the live
// I/O registry (platform/macos), another a recording's "ioRegistry" key.
//
//   std::optional<std::vector<RegistryEntry>> chain = registry.ancestors("disk4");
#pragma once

#include "common/Json.h"
#include "topology/RegistryEntry.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

class DeviceRegistryReading {
public:
    virtual ~DeviceRegistryReading() = default;
    // Absent when the registry has no disk by that name.
    virtual std::optional<std::vector<RegistryEntry>> ancestors(const std::string& bsdName) = 0;
};

// The recorded registry: {"disk4": [entry, entry, …], …}. Entries that cannot be decoded are
// left out and named in `warnings`.
class RecordedDeviceRegistry : public DeviceRegistryReading {
public:
    explicit RecordedDeviceRegistry(const Json& recorded);
    std::optional<std::vector<RegistryEntry>> ancestors(const std::string& bsdName) override;
    const std::vector<std::string>& warnings() const { return warnings_; }

private:
    std::map<std::string, std::vector<RegistryEntry>> chains_;
    std::vector<std::string> warnings_;
};

}  // namespace corvel
