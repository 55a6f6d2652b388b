#include "settings/SettingsView.h"

#include "settings/ConsentModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::text;

}  // namespace

SettingsView::SettingsView(ConsentModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      state_(ScreenParts::wrapped({})),
      withdraw_(new QPushButton(QStringLiteral("Withdraw All Consent"))),
      error_(ToolParts::toned(Tone::bad, {})) {
    confirm_ = [](QWidget* owner, const QString& question) {
        return QMessageBox::question(owner, QStringLiteral("Confirm"), question, QMessageBox::Cancel | QMessageBox::Ok,
                                     QMessageBox::Cancel) == QMessageBox::Ok;
    };
    auto* layout = ToolParts::page(this, QStringLiteral("Settings"));
    layout->addWidget(ScreenParts::heading(QStringLiteral("Privacy & Consent")));
    layout->addWidget(state_);
    for (const auto scope : allCases<ConsentScope>()) {
        auto* box = new QCheckBox(text(title(scope)));
        boxes_[scope] = box;
        layout->addWidget(box);
        auto* detail = ScreenParts::note(text(explanation(scope)));
        detail->setContentsMargins(24, 0, 0, 4);
        layout->addWidget(detail);
        connect(box, &QCheckBox::toggled, this, [this, scope](bool on) { model_.setScope(scope, on); });
    }
    auto* bar = new QHBoxLayout;
    bar->addWidget(withdraw_);
    bar->addStretch(1);
    layout->addLayout(bar);
    layout->addWidget(
        ScreenParts::note(QStringLiteral("Withdrawing switches every scope off; Velmora then asks "
                                         "again at the next start. Every decision is kept in the "
                                         "consent ledger in the data folder.")));
    layout->addWidget(error_);
    layout->addStretch(1);
    connect(withdraw_, &QPushButton::clicked, this, [this] {
        if (confirm_(this, QStringLiteral("Withdraw all consent? Every scope is switched off."))) model_.withdrawAll();
    });
    connect(&model_, &ConsentModel::changed, this, &SettingsView::rebuild);
    rebuild();
}

void SettingsView::rebuild() {
    const auto& ledger = model_.ledger();
    QString line = text(label(ledger.state()));
    if (const auto last = ledger.current())
        line += QStringLiteral(" · last decision ") + text(label(last->action)) + QStringLiteral(" on ") +
                ToolParts::date(last->date);
    state_->setText(line);
    for (const auto& [scope, box] : boxes_) {
        const QSignalBlocker quiet(box);
        box->setChecked(ledger.isGranted(scope));
        // The required scope is switched off only by withdrawing everything.
        box->setEnabled(!(isRequired(scope) && ledger.isGranted(scope)));
    }
    withdraw_->setEnabled(ledger.state() != ConsentState::withdrawn);
    error_->setText(text(model_.error()));
    error_->setVisible(!model_.error().empty());
}

}  // namespace corvel::desktop
