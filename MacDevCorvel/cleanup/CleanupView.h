// The cleanup screen: the simulation of removing the selected items (eligible items with their
// exclusive and allocated sizes, risk and category; excluded items with the safety rule's reason;
// the checks; what would be recovered), and the saved simulations, newest first, any of which can
// be shown again. Reads only its model; it offers no way to delete.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;
class QScrollArea;
class QTreeWidget;

namespace corvel::desktop {

class CleanupModel;

class CleanupView : public QWidget {
    Q_OBJECT
public:
    explicit CleanupView(CleanupModel& model, QWidget* parent = nullptr);

    QTreeWidget* history() const { return history_; }

private:
    void stateChanged();
    void progressChanged();
    void historyChanged();

    CleanupModel& model_;
    QLabel* status_;
    QPushButton* cancel_;
    QScrollArea* body_;
    QTreeWidget* history_;
};

}  // namespace corvel::desktop
