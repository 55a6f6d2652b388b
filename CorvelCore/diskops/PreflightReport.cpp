#include "diskops/PreflightReport.h"

#include <algorithm>

namespace corvel {

bool PreflightReport::canProceed() const {
    return std::none_of(checks.begin(), checks.end(),
                        [](const PreflightCheck& check) { return check.status == PreflightCheck::Status::fail; });
}

std::vector<std::string> PreflightReport::failures() const {
    std::vector<std::string> details;
    for (const auto& check : checks)
        if (check.status == PreflightCheck::Status::fail) details.push_back(check.detail);
    return details;
}

}  // namespace corvel
