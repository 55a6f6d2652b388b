// The monitoring screen: the agent (registered, running, last cycle) with a button turning it on
// or off, each volume's free-space history as a chart with its trend and forecast, the alerts and
// the volumes mounted and unmounted. Reads only its model.
#pragma once

#include <QScrollArea>

class QPushButton;

namespace corvel::desktop {

class MonitoringModel;

class MonitoringView : public QScrollArea {
    Q_OBJECT
public:
    explicit MonitoringView(MonitoringModel& model, QWidget* parent = nullptr);

    // Turns the agent on when it is off, off when it is on.
    QPushButton* agentButton() const { return agentButton_; }

private:
    void rebuild();

    MonitoringModel& model_;
    QPushButton* agentButton_ = nullptr;
};

}  // namespace corvel::desktop
