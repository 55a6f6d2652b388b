// The diagnostics screen: every finding about the machine's disks and volumes with what is wrong,
// the evidence, the impact and what to do, narrowed to one severity on request.
#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QScrollArea;

namespace corvel::desktop {

class DiagnosticsModel;

class DiagnosticsView : public QWidget {
public:
    explicit DiagnosticsView(DiagnosticsModel& model, QWidget* parent = nullptr);

    QComboBox* severityFilter() const { return filter_; }

private:
    void rebuild();

    DiagnosticsModel& model_;
    QComboBox* filter_;
    QLabel* summary_;
    QScrollArea* list_;
};

}  // namespace corvel::desktop
