// The migration screen: pick a project (or type any workspace), a target folder and, to verify, a
// copy; the plan with its blockers, what would break, the steps, commands and rollback; the
// verification's differences. Progress and Cancel while either runs.
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QScrollArea;

namespace corvel::desktop {

class MigrationModel;

class MigrationView : public QWidget {
public:
    explicit MigrationView(MigrationModel& model, QWidget* parent = nullptr);

    QLineEdit* workspace() const { return workspace_; }
    QLineEdit* target() const { return target_; }
    QLineEdit* copy() const { return copy_; }
    QPushButton* planButton() const { return plan_; }
    QPushButton* verifyButton() const { return verify_; }

private:
    void rebuild();
    void showProgress();

    MigrationModel& model_;
    QListWidget* projects_;
    QLineEdit* workspace_;
    QLineEdit* target_;
    QLineEdit* copy_;
    QPushButton* plan_;
    QPushButton* verify_;
    QPushButton* cancel_;
    QLabel* progress_;
    QScrollArea* result_;
};

}  // namespace corvel::desktop
