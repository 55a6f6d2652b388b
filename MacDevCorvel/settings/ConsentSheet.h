// The consent sheet shown at first start (and after the terms changed or consent was withdrawn):
// the terms summary and the five scopes, reading storage on and required, the others as the
// person ticks them. Accepting records the acceptance in the ledger; "Quit" records nothing
// and ends the application, since without reading storage there is nothing to show.
//
//   auto* sheet = new ConsentSheet(consent, &window);
//   connect(sheet, &ConsentSheet::declined, qApp, &QApplication::quit);
//   sheet->open();
#pragma once

#include "consent/ConsentScope.h"

#include <QDialog>
#include <map>

class QCheckBox;
class QLabel;

namespace corvel::desktop {

class ConsentModel;

class ConsentSheet : public QDialog {
    Q_OBJECT
public:
    explicit ConsentSheet(ConsentModel& model, QWidget* parent = nullptr);

    QCheckBox* box(ConsentScope scope) const { return boxes_.at(scope); }

Q_SIGNALS:
    void declined();

private:
    void acceptChoice();

    ConsentModel& model_;
    std::map<ConsentScope, QCheckBox*> boxes_;
    QLabel* error_;
};

}  // namespace corvel::desktop
