// One ranked suggestion: what was noticed, how much storage it concerns, how risky acting on it
// would be, and which screen to open to act. Insights never act themselves; each one leads to a
// review, a simulation or a plan.
//
//   Insight{"docker.reclaimable", Insight::Kind::docker, Severity::info, "Docker reports 3 GB reclaimable",
//           "…", 3000000000, CleanupRisk::red, Insight::Destination::docker, "Review"}
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"
#include "diagnostics/Severity.h"
#include "space/CleanupRisk.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct Insight {
    enum class Kind { space, safety, performance, health, migration, docker };
    enum class Destination { space, cleanup, topology, docker, migration, health, diskOperations, accounting };

    std::string id;  // the rule id, with the object's path or root appended where a rule fires per object
    Kind kind = Kind::space;
    Severity severity = Severity::info;
    std::string title;
    std::string detail;
    std::optional<std::int64_t> bytes;  // the amount of storage concerned
    std::optional<CleanupRisk> risk;    // how risky removing what it points at would be
    Destination destination = Destination::space;
    std::string actionTitle;

    bool operator==(const Insight&) const = default;
};

template <>
struct EnumTable<Insight::Kind> {
    static constexpr std::array<EnumEntry<Insight::Kind>, 6> entries{{
        {Insight::Kind::space, "space", "Space"},
        {Insight::Kind::safety, "safety", "Safety"},
        {Insight::Kind::performance, "performance", "Performance"},
        {Insight::Kind::health, "health", "Health"},
        {Insight::Kind::migration, "migration", "Migration"},
        {Insight::Kind::docker, "docker", "Docker"},
    }};
};

template <>
struct EnumTable<Insight::Destination> {
    static constexpr std::array<EnumEntry<Insight::Destination>, 8> entries{{
        {Insight::Destination::space, "space", "Space"},
        {Insight::Destination::cleanup, "cleanup", "Cleanup"},
        {Insight::Destination::topology, "topology", "Topology"},
        {Insight::Destination::docker, "docker", "Docker"},
        {Insight::Destination::migration, "migration", "Migration"},
        {Insight::Destination::health, "health", "Health"},
        {Insight::Destination::diskOperations, "diskOperations", "Disk Operations"},
        {Insight::Destination::accounting, "accounting", "Accounting"},
    }};
};

CORVEL_ENUM_JSON(Insight::Kind)
CORVEL_ENUM_JSON(Insight::Destination)

CORVEL_JSON_RECORD(Insight, id, kind, severity, title, detail, bytes, risk, destination, actionTitle)

}  // namespace corvel
