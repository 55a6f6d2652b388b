// The health view's answer for one dimension: a traffic-light status, a one-line summary, the
// evidence lines behind it and the warning or critical findings that drove it.
#pragma once

#include "common/Json.h"
#include "diagnostics/Finding.h"
#include "diagnostics/HealthDimension.h"
#include "diagnostics/HealthStatus.h"

#include <string>
#include <vector>

namespace corvel {

struct DimensionAssessment {
    HealthDimension dimension = HealthDimension::physical;  // also its identity in lists
    HealthStatus status = HealthStatus::unknown;
    std::string summary;
    std::vector<std::string> evidence;
    std::vector<Finding> findings;

    bool operator==(const DimensionAssessment&) const = default;
};

CORVEL_JSON_RECORD(DimensionAssessment, dimension, status, summary, evidence, findings)

}  // namespace corvel
