// The performance screen: the folder whose volume is measured, Run and Cancel with the progress,
// the last run's figures per test and the earlier runs.
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;

namespace corvel::desktop {

class PerformanceModel;

class PerformanceView : public QWidget {
public:
    explicit PerformanceView(PerformanceModel& model, QWidget* parent = nullptr);

    QPushButton* runButton() const { return run_; }
    QLabel* refusal() const { return refusal_; }

private:
    void rebuild();

    PerformanceModel& model_;
    QLineEdit* folder_;
    QPushButton* run_;
    QPushButton* cancel_;
    QLabel* progress_;
    QLabel* refusal_;
    QScrollArea* results_;
};

}  // namespace corvel::desktop
