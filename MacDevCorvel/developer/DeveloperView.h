// The developer storage screen: every developer-tool location with its category, size, file
// count and how the tool clears it, the total of those present, and the measurement's progress
// with Cancel. Reads only its model.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;
class QTreeWidget;

namespace corvel::desktop {

class DeveloperModel;

class DeveloperView : public QWidget {
    Q_OBJECT
public:
    explicit DeveloperView(DeveloperModel& model, QWidget* parent = nullptr);

    QTreeWidget* table() const { return table_; }

private:
    void stateChanged();
    void progressChanged();

    DeveloperModel& model_;
    QLabel* status_;
    QPushButton* measure_;
    QPushButton* cancel_;
    QTreeWidget* table_;
};

}  // namespace corvel::desktop
