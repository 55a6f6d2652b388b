// Turns the disk tool's property lists into storage records.
//
// Pure functions over bytes: nothing here runs a process, so every rule is checked on recorded
// output. Lenient by design: a wrongly typed or missing optional key becomes an absent value or
// a stated default, an entry without its identifier is skipped, and only an unreadable document
// (PropertyListError) or a missing top-level key (DiskutilParseError) throws.
//
//   auto listed = DiskutilParser::parseList(client.listPhysical());
//   PhysicalDisk disk = DiskutilParser::parsePhysicalDisk(client.info(listed[0].id), listed[0]);
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "storage/APFSContainer.h"
#include "storage/DiskutilParseError.h"
#include "storage/DiskutilVolumeInfo.h"
#include "storage/ListedDisk.h"
#include "storage/NVMeHealth.h"
#include "storage/PhysicalDisk.h"
#include "storage/PropertyList.h"

namespace corvel::DiskutilParser {

// `diskutil list -plist physical`
std::vector<ListedDisk> parseList(std::string_view bytes);

// `diskutil info -plist <whole disk>`; `listed` is the same disk's list entry when known.
PhysicalDisk parsePhysicalDisk(std::string_view bytes, const std::optional<ListedDisk>& listed);

// `diskutil info -plist <volume or mount point>`
DiskutilVolumeInfo parseVolumeInfo(std::string_view bytes);

// The NVMe counters the tool adds under its device-specific SMART dictionary.
std::optional<NVMeHealth> parseNVMe(const PropertyListValue& dictionary);

// `diskutil apfs list -plist`
std::vector<APFSContainer> parseAPFSList(std::string_view bytes);

// "disk3s1s1" -> "disk3"; anything not of the form disk<digits>... is returned unchanged.
std::string wholeDiskIdentifier(std::string_view identifier);

// A property-list number as a signed 64-bit value (reals truncated toward zero); absent for
// anything else, numeric text included.
std::optional<std::int64_t> int64(const PropertyListValue* value);

}  // namespace corvel::DiskutilParser
