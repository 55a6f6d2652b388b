// The five fixed areas a machine's storage health is judged in. Every finding belongs to one;
// the table order is also the order in which the health view lists them.
//
//   inferredHealthDimension("disk.nvme.wear") == HealthDimension::physical
#pragma once

#include "common/EnumTable.h"

#include <array>
#include <string_view>

namespace corvel {

enum class HealthDimension { physical, fileSystem, usage, connection, availability };

template <>
struct EnumTable<HealthDimension> {
    static constexpr std::array<EnumEntry<HealthDimension>, 5> entries{{
        {HealthDimension::physical, "physical", "Physical Health"},
        {HealthDimension::fileSystem, "fileSystem", "File System Health"},
        {HealthDimension::usage, "usage", "Storage Usage"},
        {HealthDimension::connection, "connection", "Connection Performance"},
        {HealthDimension::availability, "availability", "Device Availability"},
    }};
};
CORVEL_ENUM_JSON(HealthDimension)

// The dimension a rule's findings belong to, read from its dotted identifier: "disk." rules are
// physical, the free-space rule is usage, "topology." is connection, "availability." is
// availability, and everything else (read-only, formats, ownership, encryption) is file system.
HealthDimension inferredHealthDimension(std::string_view ruleID);

}  // namespace corvel
