// The kind of data a path holds, as the space views group it. The raw value is the display name
// and also what JSON carries ("Personal Data"); the table order is the display order and the
// order of per-category totals.
#pragma once

#include "common/EnumTable.h"

#include <array>
#include <cstdint>

namespace corvel {

enum class SpaceCategory : std::uint8_t {
    projects,
    userData,
    downloads,
    appData,
    docker,
    xcode,
    simulators,
    virtualEnvs,
    nodeModules,
    caches,
    logs,
    builds,
    trash,
    temporary,
    databases,
    credentials,
    packageManagers,
    applications,
    system,
    other,
};

template <>
struct EnumTable<SpaceCategory> {
    static constexpr std::array<EnumEntry<SpaceCategory>, 20> entries{{
        {SpaceCategory::projects, "Projects", "Projects"},
        {SpaceCategory::userData, "Personal Data", "Personal Data"},
        {SpaceCategory::downloads, "Downloads", "Downloads"},
        {SpaceCategory::appData, "Application Data", "Application Data"},
        {SpaceCategory::docker, "Docker", "Docker"},
        {SpaceCategory::xcode, "Xcode", "Xcode"},
        {SpaceCategory::simulators, "Simulators", "Simulators"},
        {SpaceCategory::virtualEnvs, "Virtual Environments", "Virtual Environments"},
        {SpaceCategory::nodeModules, "Node Modules", "Node Modules"},
        {SpaceCategory::caches, "Caches", "Caches"},
        {SpaceCategory::logs, "Logs", "Logs"},
        {SpaceCategory::builds, "Build Output", "Build Output"},
        {SpaceCategory::trash, "Trash", "Trash"},
        {SpaceCategory::temporary, "Temporary", "Temporary"},
        {SpaceCategory::databases, "Databases", "Databases"},
        {SpaceCategory::credentials, "Credentials", "Credentials"},
        {SpaceCategory::packageManagers, "Package Managers", "Package Managers"},
        {SpaceCategory::applications, "Applications", "Applications"},
        {SpaceCategory::system, "System", "System"},
        {SpaceCategory::other, "Other", "Other"},
    }};
};

CORVEL_ENUM_JSON(SpaceCategory)

}  // namespace corvel
