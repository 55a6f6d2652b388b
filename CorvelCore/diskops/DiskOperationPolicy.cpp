#include "diskops/DiskOperationPolicy.h"

#include "common/Text.h"

#include <initializer_list>

namespace corvel::DiskOperationPolicy {
namespace {

using Kind = DiskObjectKind;

bool isOneOf(Kind kind, std::initializer_list<Kind> kinds) {
    for (const auto candidate : kinds)
        if (candidate == kind) return true;
    return false;
}

OperationAvailability enabled(DiskOperation operation, std::optional<std::string> reason = std::nullopt) {
    return {operation, true, true, std::move(reason)};
}

OperationAvailability disabled(DiskOperation operation, std::string reason) {
    return {operation, true, false, std::move(reason)};
}

std::string notEjectableReason(Platform platform) {
    return std::string(label(platform)) + " reports this device as not ejectable.";
}

std::string firstAidReason(Platform platform) {
    if (platform == Platform::linux)
        return "Repair writes file-system metadata. It needs a privileged helper and separate approval; run fsck "
               "on the unmounted volume yourself meanwhile.";
    return "Repair writes file-system metadata. It needs a privileged helper and separate approval; use Disk "
           "Utility › First Aid meanwhile.";
}

}  // namespace

bool isRunningFrom(const DiskObject& object, const std::string& appBundlePath) {
    std::vector<std::string> mountPoints;
    if (object.mountPoint) mountPoints.push_back(*object.mountPoint);
    mountPoints.insert(mountPoints.end(), object.hostedMountPoints.begin(), object.hostedMountPoints.end());
    for (const auto& mountPoint : mountPoints) {
        if (mountPoint == "/") continue;
        if (appBundlePath == mountPoint || startsWith(appBundlePath, mountPoint + "/")) return true;
    }
    return false;
}

OperationAvailability availability(DiskOperation operation, const DiskObject& object, const std::string& appBundlePath,
                                   Platform platform) {
    const OperationAvailability notApplicable{operation, false, false, std::nullopt};
    const Kind kind = object.kind;
    switch (operation) {
        case DiskOperation::mount:
            if (!isOneOf(kind, {Kind::volume, Kind::partition, Kind::physicalDisk}) || object.isNetwork)
                return notApplicable;
            // A whole disk is always offered mount: it mounts whatever of it is not mounted yet.
            if (object.isMounted() && kind != Kind::physicalDisk) return notApplicable;
            return enabled(operation);
        case DiskOperation::unmount:
            if (!isOneOf(kind, {Kind::volume, Kind::mountPoint, Kind::partition, Kind::physicalDisk}))
                return notApplicable;
            if (kind != Kind::physicalDisk && !object.isMounted()) return notApplicable;
            if (object.isBootVolume) return disabled(operation, "The startup disk can't be unmounted.");
            if (isRunningFrom(object, appBundlePath))
                return disabled(operation,
                                "Velmora is running from this volume. Quit it and run it from another disk first.");
            return enabled(operation);
        case DiskOperation::eject:
            if (!isOneOf(kind, {Kind::volume, Kind::physicalDisk}) || object.isNetwork) return notApplicable;
            if (object.isInternal || object.isBootVolume)
                return disabled(operation, "Internal and startup disks can't be ejected.");
            if (isRunningFrom(object, appBundlePath))
                return disabled(operation,
                                "Velmora is running from this disk. Quit it and run it from another disk first.");
            if (!object.isEjectable) return disabled(operation, notEjectableReason(platform));
            return enabled(operation);
        case DiskOperation::verifyVolume:
            if (kind != Kind::volume || object.isNetwork) return notApplicable;
            // fsck reads the device underneath a mounted file system, which changes while it reads.
            if (platform == Platform::linux && object.isMounted())
                return disabled(operation, "Linux checks a file system only while it is unmounted. Unmount it first.");
            return enabled(operation);
        case DiskOperation::firstAid:
            if (kind != Kind::volume || object.isNetwork) return notApplicable;
            return disabled(operation, firstAidReason(platform));
        case DiskOperation::createDirectory:
            if (!isOneOf(kind, {Kind::volume, Kind::mountPoint}) || !object.isMounted()) return notApplicable;
            if (!object.isWritable) return disabled(operation, "The volume is read-only.");
            return enabled(operation);
        case DiskOperation::createAPFSVolume:
            if (kind != Kind::apfsContainer) return notApplicable;
            return disabled(operation, object.isInternal ? "Changing the internal startup container is not allowed."
                                                         : "Adding volumes needs a privileged helper, tests and "
                                                           "separate approval. A plan can be prepared.");
        case DiskOperation::prepareFormat:
            if (kind != Kind::physicalDisk) return notApplicable;
            if (object.isInternal || object.isBootVolume)
                return disabled(operation, "Internal and startup disks can never be erased or formatted.");
            // Enabled means the plan can be prepared; nothing here ever formats.
            return enabled(operation, "Produces a plan only. Nothing is erased.");
    }
    return notApplicable;
}

std::vector<OperationAvailability> all(const DiskObject& object, const std::string& appBundlePath, Platform platform) {
    std::vector<OperationAvailability> result;
    for (const auto operation : allCases<DiskOperation>())
        result.push_back(availability(operation, object, appBundlePath, platform));
    return result;
}

}  // namespace corvel::DiskOperationPolicy
