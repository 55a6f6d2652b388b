// Small builders for disks, volumes and findings, so each test states only the facts its rule
// looks at.
#pragma once

#include "diagnostics/Finding.h"
#include "storage/PhysicalDisk.h"
#include "storage/StorageVolume.h"

#include <cstdint>
#include <string>

namespace corvel::testing {

inline constexpr std::int64_t GB = 1000LL * 1000 * 1000;

inline PhysicalDisk internalDisk(std::string id = "disk0", std::string mediaName = "APPLE SSD AP1024Z Media") {
    PhysicalDisk disk;
    disk.id = std::move(id);
    disk.mediaName = std::move(mediaName);
    disk.sizeBytes = 1000 * GB;
    disk.busProtocol = "Apple Fabric";
    disk.isInternal = true;
    disk.smartStatus = SMARTStatus::verified;
    return disk;
}

inline PhysicalDisk externalDisk(std::string id = "disk4", std::string mediaName = "Samsung T7 Media") {
    PhysicalDisk disk;
    disk.id = std::move(id);
    disk.mediaName = std::move(mediaName);
    disk.sizeBytes = 2000 * GB;
    disk.busProtocol = "USB";
    disk.isInternal = false;
    disk.isEjectable = true;
    disk.smartStatus = SMARTStatus::notSupported;
    return disk;
}

// NVMe health with only the figures a test names: NVMe().used(80).temperature(71.0)
struct NVMe {
    NVMeHealth health;
    NVMe& used(std::int64_t percent) { health.percentageUsed = percent; return *this; }
    NVMe& spare(std::int64_t percent) { health.availableSpare = percent; return *this; }
    NVMe& spareThreshold(std::int64_t percent) { health.availableSpareThreshold = percent; return *this; }
    NVMe& temperature(double celsius) { health.temperatureCelsius = celsius; return *this; }
    NVMe& mediaErrors(std::int64_t count) { health.mediaErrors = count; return *this; }
    operator NVMeHealth() const { return health; }
};

inline PhysicalDisk nvmeDisk(NVMeHealth health) {
    PhysicalDisk disk = internalDisk();
    disk.nvme = health;
    return disk;
}

// A writable internal APFS volume with plenty of room.
inline StorageVolume volume(std::string id, std::string name, std::int64_t total, std::int64_t available) {
    StorageVolume v;
    v.id = std::move(id);
    v.name = std::move(name);
    v.mountPoint = "/Volumes/" + v.name;
    v.fileSystemType = "apfs";
    v.fileSystemName = "APFS";
    v.totalBytes = total;
    v.availableBytes = available;
    v.isInternal = true;
    v.ownershipEnabled = true;
    v.isEncrypted = true;
    v.physicalDiskID = "disk0";
    return v;
}

inline StorageVolume externalVolume(std::string id, std::string name) {
    StorageVolume v = volume(std::move(id), std::move(name), 2000 * GB, 1500 * GB);
    v.isInternal = false;
    v.isEjectable = true;
    v.physicalDiskID = "disk4";
    return v;
}

inline Finding finding(std::string ruleID, Severity severity, std::string subjectName,
                       FindingSubject subject = FindingSubject::volume("V")) {
    return Finding::make(std::move(ruleID), severity, std::move(subject), std::move(subjectName), "title", "detail");
}

}  // namespace corvel::testing
