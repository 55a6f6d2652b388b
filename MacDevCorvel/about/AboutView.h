// The about screen: the version, "Check for Updates" with its answer, and the libraries with
// their licences.
#pragma once

#include <QWidget>

class QPushButton;
class QScrollArea;

namespace corvel::desktop {

class AboutModel;

class AboutView : public QWidget {
public:
    explicit AboutView(AboutModel& model, QWidget* parent = nullptr);

    QPushButton* checkButton() const { return check_; }

private:
    void rebuild();

    AboutModel& model_;
    QPushButton* check_;
    QScrollArea* answer_;
};

}  // namespace corvel::desktop
