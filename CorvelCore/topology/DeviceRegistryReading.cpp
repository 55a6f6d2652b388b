#include "topology/DeviceRegistryReading.h"

namespace corvel {

RecordedDeviceRegistry::RecordedDeviceRegistry(const Json& recorded) {
    if (recorded.is_null()) return;
    if (!recorded.is_object()) {
        warnings_.push_back("Recorded I/O registry ignored: \"ioRegistry\" is not an object");
        return;
    }
    for (const auto& [disk, chain] : recorded.items()) {
        try {
            chains_[disk] = chain.get<std::vector<RegistryEntry>>();
        } catch (const std::exception& problem) {
            warnings_.push_back("Recorded I/O registry entry of " + disk + " ignored: " + problem.what());
        }
    }
}

std::optional<std::vector<RegistryEntry>> RecordedDeviceRegistry::ancestors(const std::string& bsdName) {
    const auto found = chains_.find(bsdName);
    if (found == chains_.end()) return std::nullopt;
    return found->second;
}

}  // namespace corvel
