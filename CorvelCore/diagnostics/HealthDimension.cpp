#include "diagnostics/HealthDimension.h"

#include "common/Text.h"

namespace corvel {

HealthDimension inferredHealthDimension(std::string_view ruleID) {
    if (startsWith(ruleID, "disk.")) return HealthDimension::physical;
    if (ruleID == "volume.freeSpace") return HealthDimension::usage;
    if (startsWith(ruleID, "topology.")) return HealthDimension::connection;
    if (startsWith(ruleID, "availability.")) return HealthDimension::availability;
    return HealthDimension::fileSystem;
}

}  // namespace corvel
