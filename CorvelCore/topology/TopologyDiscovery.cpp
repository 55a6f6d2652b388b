#include "topology/TopologyDiscovery.h"

#include "topology/DeviceRegistryReading.h"
#include "topology/LinuxTopologyReader.h"
#include "topology/MacTopologyReader.h"
#include "topology/SysfsTree.h"

namespace corvel::TopologyDiscovery {

TopologyReading fromSysfs(SysfsReading& sysfs, const std::vector<PhysicalDisk>& disks) {
    const auto paths = LinuxTopologyReader::read(sysfs, disks);
    return TopologyReading::assemble(paths, disks, sysfs.warnings());
}

std::optional<std::filesystem::path> recordedSysfs(const RecordedMachine& recording, std::string* problem) {
    const auto found = recording.document.find(sysfsKey);
    const auto fail = [&](std::string why) -> std::optional<std::filesystem::path> {
        if (problem) *problem = std::move(why);
        return std::nullopt;
    };
    if (found == recording.document.end()) return fail("the recording has no sysfs tree");
    if (!found->is_string()) return fail("the recording's \"sysfs\" is not a folder name");
    const std::filesystem::path name = found->get<std::string>();
    // A folder inside the recording, never one elsewhere on this machine.
    bool inside = !name.empty() && name.is_relative();
    for (const auto& part : name) inside = inside && part != "..";
    if (!inside) return fail("the recording's sysfs folder '" + name.string() + "' is not inside the recording");
    auto folder = recording.directory / name;
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
        return fail("the recorded sysfs folder " + folder.string() + " is missing");
    return folder;
}

TopologyReading replay(CommandRunning& runner, const RecordedMachine& recording, const StorageSnapshot& snapshot) {
    if (recording.platform == Platform::linux) {
        std::string problem;
        const auto folder = recordedSysfs(recording, &problem);
        if (!folder) return TopologyReading::assemble({}, snapshot.disks, {"Topology not read: " + problem});
        SysfsTree sysfs(*folder);
        return fromSysfs(sysfs, snapshot.disks);
    }
    const auto found = recording.document.find(registryKey);
    RecordedDeviceRegistry registry(found == recording.document.end() ? Json() : *found);
    auto reading = MacTopologyReader::discover(runner, &registry, snapshot.disks);
    reading.warnings.insert(reading.warnings.begin(), registry.warnings().begin(), registry.warnings().end());
    return reading;
}

}  // namespace corvel::TopologyDiscovery
