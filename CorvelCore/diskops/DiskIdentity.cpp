#include "diskops/DiskIdentity.h"

#include "command/DiskutilClient.h"
#include "diskops/LinuxDiskCommands.h"
#include "storage/DiskutilParser.h"
#include "storage/LsblkClient.h"
#include "storage/LsblkParser.h"

namespace corvel {
namespace {

const BlockDevice* findDevice(const std::vector<BlockDevice>& devices, const std::string& identifier) {
    for (const auto& device : devices) {
        if (device.kernelName == identifier || device.name == identifier || device.path == identifier ||
            device.path == "/dev/" + identifier)
            return &device;
        if (const auto* found = findDevice(device.children, identifier)) return found;
    }
    return nullptr;
}

}  // namespace

DiskIdentity DiskIdentity::fromDiskutilInfo(std::string_view plist) {
    const auto info = DiskutilParser::parseVolumeInfo(plist);
    DiskIdentity identity;
    identity.volumeUUID = info.volumeUUID;
    if (info.mountPoint) identity.mountPoints.push_back(*info.mountPoint);
    return identity;
}

std::optional<DiskIdentity> DiskIdentity::fromBlockDevices(const std::vector<BlockDevice>& devices,
                                                           const std::string& identifier) {
    const auto* device = findDevice(devices, identifier);
    if (!device) return std::nullopt;
    return DiskIdentity{device->uuid, LinuxDiskCommands::fileSystemMounts(*device)};
}

DiskIdentity DiskIdentity::read(Platform platform, CommandRunning& runner, const std::string& identifier) {
    if (platform == Platform::linux) {
        auto identity = fromBlockDevices(LsblkParser::parse(LsblkClient{runner}.listAll()), identifier);
        if (!identity) throw DiskIdentityMissing(identifier + " is not listed by lsblk");
        return *identity;
    }
    return fromDiskutilInfo(DiskutilClient(runner).info(identifier));
}

}  // namespace corvel
