#include "diagnostics/DimensionAssessment.h"

namespace corvel {

void to_json(Json& j, const DimensionAssessment& assessment) {
    j = Json{{"dimension", assessment.dimension},
             {"status", assessment.status},
             {"summary", assessment.summary},
             {"evidence", assessment.evidence},
             {"findings", assessment.findings}};
}

void from_json(const Json& j, DimensionAssessment& assessment) {
    assessment.dimension = required<HealthDimension>(j, "dimension");
    assessment.status = required<HealthStatus>(j, "status");
    assessment.summary = required<std::string>(j, "summary");
    assessment.evidence = required<std::vector<std::string>>(j, "evidence");
    assessment.findings = required<std::vector<Finding>>(j, "findings");
}

}  // namespace corvel
