#include "storage/BlockDevice.h"

namespace corvel {

void to_json(Json& j, const BlockDevice& d) {
    j = Json::object();
    j["name"] = d.name;
    j["kernelName"] = d.kernelName;
    j["path"] = d.path;
    j["type"] = d.type;
    putOptional(j, "majorMinor", d.majorMinor);
    j["sizeBytes"] = d.sizeBytes;
    putOptional(j, "vendor", d.vendor);
    putOptional(j, "model", d.model);
    putOptional(j, "serial", d.serial);
    putOptional(j, "transport", d.transport);
    putOptional(j, "subsystems", d.subsystems);
    putOptional(j, "isRotational", d.isRotational);
    putOptional(j, "isRemovable", d.isRemovable);
    putOptional(j, "isHotplug", d.isHotplug);
    putOptional(j, "isReadOnly", d.isReadOnly);
    putOptional(j, "physicalSectorSize", d.physicalSectorSize);
    putOptional(j, "partitionTableType", d.partitionTableType);
    putOptional(j, "fileSystemType", d.fileSystemType);
    putOptional(j, "label", d.label);
    putOptional(j, "uuid", d.uuid);
    putOptional(j, "partitionUUID", d.partitionUUID);
    putOptional(j, "partitionLabel", d.partitionLabel);
    putOptional(j, "partitionTypeName", d.partitionTypeName);
    j["mountPoints"] = d.mountPoints;
    j["children"] = d.children;
}

void from_json(const Json& j, BlockDevice& d) {
    d.name = required<std::string>(j, "name");
    d.kernelName = required<std::string>(j, "kernelName");
    d.path = required<std::string>(j, "path");
    d.type = required<std::string>(j, "type");
    d.majorMinor = optionalValue<std::string>(j, "majorMinor");
    d.sizeBytes = required<std::int64_t>(j, "sizeBytes");
    d.vendor = optionalValue<std::string>(j, "vendor");
    d.model = optionalValue<std::string>(j, "model");
    d.serial = optionalValue<std::string>(j, "serial");
    d.transport = optionalValue<std::string>(j, "transport");
    d.subsystems = optionalValue<std::string>(j, "subsystems");
    d.isRotational = optionalValue<bool>(j, "isRotational");
    d.isRemovable = optionalValue<bool>(j, "isRemovable");
    d.isHotplug = optionalValue<bool>(j, "isHotplug");
    d.isReadOnly = optionalValue<bool>(j, "isReadOnly");
    d.physicalSectorSize = optionalValue<int>(j, "physicalSectorSize");
    d.partitionTableType = optionalValue<std::string>(j, "partitionTableType");
    d.fileSystemType = optionalValue<std::string>(j, "fileSystemType");
    d.label = optionalValue<std::string>(j, "label");
    d.uuid = optionalValue<std::string>(j, "uuid");
    d.partitionUUID = optionalValue<std::string>(j, "partitionUUID");
    d.partitionLabel = optionalValue<std::string>(j, "partitionLabel");
    d.partitionTypeName = optionalValue<std::string>(j, "partitionTypeName");
    d.mountPoints = required<std::vector<std::string>>(j, "mountPoints");
    d.children = required<std::vector<BlockDevice>>(j, "children");
}

}  // namespace corvel
