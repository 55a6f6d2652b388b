// The dashboard's state: the values of the last refresh (disks, volumes, forecasts, the health
// dimensions, the insights) exactly as the core computed them. The model decides nothing; it
// keeps the values, answers the few questions the view asks, and says when they changed.
//
//   DashboardModel model;
//   connect(&model, &DashboardModel::changed, view, &DashboardView::rebuild);
//   model.setValues({refresh.snapshot, refresh.diagnosis, refresh.forecasts, insights.insights});
#pragma once

#include "insights/Insight.h"
#include "machine/MachineDiagnosis.h"
#include "storage/StorageSnapshot.h"

#include <QObject>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class DashboardModel : public QObject {
    Q_OBJECT
public:
    // The insights a glance shows; the rest wait on their own screen.
    static constexpr std::size_t topInsightCount = 4;

    struct Values {
        StorageSnapshot snapshot;
        MachineDiagnosis diagnosis;
        std::map<std::string, double> forecasts;  // volume id -> days until full
        std::vector<Insight> insights;            // most important first, as the engine ranks them
        std::vector<std::string> warnings;        // the snapshot's, the refresh's and unread inputs
    };

    using QObject::QObject;

    void setValues(Values values);

    bool isLoaded() const { return loaded_; }
    const Values& values() const { return values_; }
    const StorageSnapshot& snapshot() const { return values_.snapshot; }
    const std::vector<DimensionAssessment>& health() const { return values_.diagnosis.health; }
    MachineDiagnosis::Overall overall() const { return values_.diagnosis.overall(); }
    std::vector<Insight> topInsights() const;
    std::optional<double> forecastFor(const std::string& volumeID) const;

Q_SIGNALS:
    void changed();

private:
    Values values_;
    bool loaded_ = false;
};

}  // namespace corvel::desktop
