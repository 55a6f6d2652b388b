#include "dashboard/DashboardModel.h"

#include <algorithm>

namespace corvel::desktop {

void DashboardModel::setValues(Values values) {
    values_ = std::move(values);
    loaded_ = true;
    Q_EMIT changed();
}

std::vector<Insight> DashboardModel::topInsights() const {
    const auto& all = values_.insights;
    return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(std::min(all.size(), topInsightCount))};
}

std::optional<double> DashboardModel::forecastFor(const std::string& volumeID) const {
    const auto found = values_.forecasts.find(volumeID);
    if (found == values_.forecasts.end()) return std::nullopt;
    return found->second;
}

}  // namespace corvel::desktop
