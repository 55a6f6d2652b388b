// The settings screen's "Privacy & Consent": where the person stands with the terms, each scope
// switched on or off (each change recorded in the ledger), and "Withdraw All Consent".
#pragma once

#include "consent/ConsentScope.h"

#include <QWidget>
#include <functional>
#include <map>

class QCheckBox;
class QLabel;
class QPushButton;

namespace corvel::desktop {

class ConsentModel;

class SettingsView : public QWidget {
public:
    using Confirmation = std::function<bool(QWidget* parent, const QString& question)>;

    explicit SettingsView(ConsentModel& model, QWidget* parent = nullptr);

    void setConfirmation(Confirmation confirmation) { confirm_ = std::move(confirmation); }
    QCheckBox* box(ConsentScope scope) const { return boxes_.at(scope); }
    QPushButton* withdrawButton() const { return withdraw_; }

private:
    void rebuild();

    ConsentModel& model_;
    QLabel* state_;
    std::map<ConsentScope, QCheckBox*> boxes_;
    QPushButton* withdraw_;
    QLabel* error_;
    Confirmation confirm_;
};

}  // namespace corvel::desktop
