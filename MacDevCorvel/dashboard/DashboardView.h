// The dashboard: the overall judgement, the disks with their SMART lights, the volumes with usage
// bars and forecasts, the five health dimensions as traffic lights, and the top insights with an
// action that opens the screen dealing with them; a disk's or volume's name opens its details. Rebuilt from the model
// whenever it changes.
#pragma once

#include "insights/Insight.h"

#include <QScrollArea>
#include <functional>

namespace corvel::desktop {

class DashboardModel;

class DashboardView : public QScrollArea {
    Q_OBJECT
public:
    // `hasScreen` says whether an insight's destination has a screen in this application yet.
    DashboardView(DashboardModel& model, std::function<bool(Insight::Destination)> hasScreen,
                  QWidget* parent = nullptr);

Q_SIGNALS:
    void insightActionRequested(corvel::Insight::Destination destination);
    // "disk:ID" or "volume:ID".
    void detailsRequested(const QString& target);

private:
    void rebuild();

    DashboardModel& model_;
    std::function<bool(Insight::Destination)> hasScreen_;
};

}  // namespace corvel::desktop
