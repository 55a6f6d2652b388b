#include "diagnostics/ExpectedVolume.h"

namespace corvel::HealthAssessment {

void to_json(Json& j, const ExpectedVolume& volume) {
    j = Json{{"volumeID", volume.volumeID}, {"name", volume.name}, {"reason", volume.reason}};
}

void from_json(const Json& j, ExpectedVolume& volume) {
    volume.volumeID = required<std::string>(j, "volumeID");
    volume.name = required<std::string>(j, "name");
    volume.reason = required<std::string>(j, "reason");
}

}  // namespace corvel::HealthAssessment
