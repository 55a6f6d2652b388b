#include "storage/PhysicalDisk.h"

#include "common/Text.h"

namespace corvel {

std::string PhysicalDisk::displayName() const {
    if (mediaName.empty()) return id;
    return replaceAll(mediaName, " Media", "");
}

std::string PhysicalDisk::connectionLabel() const {
    std::string label = isInternal ? "Internal" : "External";
    if (busProtocol && !busProtocol->empty()) label += " \u00B7 " + *busProtocol;
    return label;
}

void to_json(Json& j, const PhysicalDisk& d) {
    j = Json{{"id", d.id}, {"mediaName", d.mediaName}, {"sizeBytes", d.sizeBytes}};
    putOptional(j, "busProtocol", d.busProtocol);
    j["isInternal"] = d.isInternal;
    j["isEjectable"] = d.isEjectable;
    putOptional(j, "isSolidState", d.isSolidState);
    putOptional(j, "partitionScheme", d.partitionScheme);
    putOptional(j, "blockSize", d.blockSize);
    j["smartStatus"] = d.smartStatus;
    putOptional(j, "nvme", d.nvme);
    j["partitions"] = d.partitions;
}

void from_json(const Json& j, PhysicalDisk& d) {
    d.id = required<std::string>(j, "id");
    d.mediaName = required<std::string>(j, "mediaName");
    d.sizeBytes = required<std::int64_t>(j, "sizeBytes");
    d.busProtocol = optionalValue<std::string>(j, "busProtocol");
    d.isInternal = required<bool>(j, "isInternal");
    d.isEjectable = required<bool>(j, "isEjectable");
    d.isSolidState = optionalValue<bool>(j, "isSolidState");
    d.partitionScheme = optionalValue<std::string>(j, "partitionScheme");
    d.blockSize = optionalValue<std::int64_t>(j, "blockSize");
    d.smartStatus = required<SMARTStatus>(j, "smartStatus");
    d.nvme = optionalValue<NVMeHealth>(j, "nvme");
    d.partitions = required<std::vector<Partition>>(j, "partitions");
}

}  // namespace corvel
