#include "diagnostics/ExpectedVolume.h"

namespace corvel::HealthAssessment {

}  // namespace corvel::HealthAssessment
