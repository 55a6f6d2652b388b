// The processes screen: the running groups with their CPU and memory, the three actions on the
// group chosen (each through the policy, with a confirmation naming the processes), the outcome
// and the records of earlier actions.
#pragma once

#include <QWidget>
#include <functional>

class QCheckBox;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace corvel::desktop {

class ProcessesModel;

class ProcessesView : public QWidget {
public:
    using Confirmation = std::function<bool(QWidget* parent, const QString& question)>;

    explicit ProcessesView(ProcessesModel& model, QWidget* parent = nullptr);

    void setConfirmation(Confirmation confirmation) { confirm_ = std::move(confirmation); }
    QTreeWidget* groups() const { return groups_; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void rebuild();
    void chosenChanged();

    ProcessesModel& model_;
    QLabel* status_;
    QCheckBox* all_;
    QPushButton* reload_;
    QTreeWidget* groups_;
    std::vector<QPushButton*> actions_;
    QLabel* decision_;
    QLabel* outcome_;
    QTreeWidget* records_;
    Confirmation confirm_;
};

}  // namespace corvel::desktop
