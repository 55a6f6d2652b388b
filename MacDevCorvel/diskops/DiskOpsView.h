// The disk operations screen: the objects on the left; on the right what can be done with the one
// chosen (and why not), the preflight check by check, a confirmation naming the target before any
// run, the outcome, and the audit log.
#pragma once

#include <QString>
#include <QWidget>
#include <functional>

class QListWidget;
class QScrollArea;

namespace corvel::desktop {

class DiskOpsModel;

class DiskOpsView : public QWidget {
public:
    // Answers whether the person confirmed the question; a message box unless replaced.
    using Confirmation = std::function<bool(QWidget* parent, const QString& question)>;

    explicit DiskOpsView(DiskOpsModel& model, QWidget* parent = nullptr);

    void setConfirmation(Confirmation confirmation) { confirm_ = std::move(confirmation); }
    QListWidget* objects() const { return objects_; }

private:
    void rebuild();
    void runConfirmed();

    DiskOpsModel& model_;
    QListWidget* objects_;
    QScrollArea* detail_;
    Confirmation confirm_;
};

}  // namespace corvel::desktop
