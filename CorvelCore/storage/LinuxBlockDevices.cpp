#include "storage/LinuxBlockDevices.h"

#include <array>
#include <functional>

#include "common/Text.h"

namespace corvel::LinuxBlockDevices {

namespace {

// Vendor columns that name a bus or a PCI id rather than a maker are noise in a disk's name.
bool isMeaningfulVendor(const std::string& vendor) {
    return vendor != "ATA" && !startsWith(vendor, "0x");
}

std::string mediaName(const BlockDevice& device) {
    std::string model = device.model.value_or("");
    if (device.vendor && isMeaningfulVendor(*device.vendor)) {
        const std::string& vendor = *device.vendor;
        if (model.empty()) return vendor;
        if (!startsWith(model, vendor)) return vendor + " " + model;
    }
    return model;
}

bool isWholeDiskDevice(const BlockDevice& device) {
    return !device.majorMinor || !startsWith(*device.majorMinor, "1:");  // major 1 is the ram driver
}

bool search(const BlockDevice& device, const std::function<bool(const BlockDevice&)>& matches,
            std::vector<const BlockDevice*>& chain) {
    chain.push_back(&device);
    if (matches(device)) return true;
    for (const auto& child : device.children) {
        if (search(child, matches, chain)) return true;
    }
    chain.pop_back();
    return false;
}

std::optional<DeviceStack> find(const std::vector<BlockDevice>& devices,
                                const std::function<bool(const BlockDevice&)>& matches) {
    for (const auto& device : devices) {
        std::vector<const BlockDevice*> chain;
        if (search(device, matches, chain)) return DeviceStack{std::move(chain)};
    }
    return std::nullopt;
}

}  // namespace

bool isPhysicalDisk(const BlockDevice& device) {
    if (device.type != "disk") return false;
    for (std::string_view virtualPrefix : {"loop", "zram", "ram", "nbd"}) {
        if (startsWith(device.kernelName, virtualPrefix)) return false;
    }
    return isWholeDiskDevice(device);
}

std::optional<std::string> busProtocol(const BlockDevice& device) {
    static const std::array<std::pair<std::string_view, std::string_view>, 10> names{{
        {"usb", "USB"}, {"sata", "SATA"}, {"nvme", "NVMe"}, {"sas", "SAS"}, {"ata", "ATA"},
        {"scsi", "SCSI"}, {"mmc", "MMC"}, {"iscsi", "iSCSI"}, {"fc", "Fibre Channel"}, {"spi", "SPI"},
    }};
    if (device.transport) {
        std::string transport = toLower(*device.transport);
        for (const auto& [raw, label] : names) {
            if (transport == raw) return std::string(label);
        }
        return toUpper(transport);
    }
    if (device.subsystems && device.subsystems->find("virtio") != std::string::npos) return std::string("VirtIO");
    return std::nullopt;
}

PhysicalDisk makePhysicalDisk(const BlockDevice& device) {
    PhysicalDisk disk;
    disk.id = device.kernelName;
    disk.mediaName = mediaName(device);
    disk.sizeBytes = device.sizeBytes;
    disk.busProtocol = busProtocol(device);
    // A disk that can be unplugged while running, or whose medium comes out, is not part of
    // the machine, whatever bus it hangs on.
    bool detachable = device.isHotplug.value_or(false) || device.isRemovable.value_or(false) ||
                      toLower(device.transport.value_or("")) == "usb";
    disk.isInternal = !detachable;
    disk.isEjectable = detachable;
    if (device.isRotational) disk.isSolidState = !*device.isRotational;
    if (device.partitionTableType) {
        const std::string& scheme = *device.partitionTableType;
        disk.partitionScheme = scheme == "gpt" ? std::string("GPT") : scheme == "dos" ? std::string("MBR") : scheme;
    }
    disk.blockSize = device.physicalSectorSize;
    disk.smartStatus = SMARTStatus::unknown;
    for (const auto& child : device.children) {
        if (child.type != "part") continue;
        Partition partition;
        partition.id = child.kernelName;
        partition.content = child.partitionTypeName.value_or(child.fileSystemType.value_or(""));
        partition.sizeBytes = child.sizeBytes;
        partition.volumeName = child.label;
        partition.uuid = child.partitionUUID ? child.partitionUUID : child.uuid;
        disk.partitions.push_back(std::move(partition));
    }
    return disk;
}

bool DeviceStack::hasCryptLayer() const {
    for (const auto* device : chain) {
        if (device->type == "crypt") return true;
    }
    return false;
}

std::optional<DeviceStack> locate(const std::vector<BlockDevice>& devices, const MountInfoEntry& mount) {
    // Device numbers are exact, except for btrfs, whose mounts carry an anonymous 0:N.
    if (!startsWith(mount.majorMinor, "0:")) {
        if (auto stack = find(devices, [&](const BlockDevice& d) { return d.majorMinor == mount.majorMinor; })) {
            return stack;
        }
    }
    const std::string& source = mount.source;
    if (!startsWith(source, "/dev/")) return std::nullopt;

    struct Alias {
        std::string_view folder;
        std::optional<std::string> BlockDevice::*field;
    };
    static const std::array<Alias, 4> aliases{{
        {"/dev/disk/by-uuid/", &BlockDevice::uuid},
        {"/dev/disk/by-label/", &BlockDevice::label},
        {"/dev/disk/by-partuuid/", &BlockDevice::partitionUUID},
        {"/dev/disk/by-partlabel/", &BlockDevice::partitionLabel},
    }};
    for (const auto& alias : aliases) {
        if (startsWith(source, alias.folder)) {
            std::string key = MountInfoEntry::unescape(source.substr(alias.folder.size()));
            return find(devices, [&](const BlockDevice& d) { return d.*alias.field == key; });
        }
    }
    return find(devices, [&](const BlockDevice& d) {
        return d.path == source || "/dev/" + d.kernelName == source || "/dev/mapper/" + d.name == source;
    });
}

}  // namespace corvel::LinuxBlockDevices

