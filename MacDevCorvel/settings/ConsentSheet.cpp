#include "settings/ConsentSheet.h"

#include "consent/Terms.h"
#include "settings/ConsentModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvel::desktop {

ConsentSheet::ConsentSheet(ConsentModel& model, QWidget* parent)
    : QDialog(parent), model_(model), error_(ToolParts::toned(Tone::bad, {})) {
    setWindowTitle(QStringLiteral("Welcome to Velmora"));
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(ScreenParts::title(QStringLiteral("Before Velmora starts")));
    for (const auto& sentence : Terms::summary()) layout->addWidget(ScreenParts::wrapped(ScreenParts::text(sentence)));
    layout->addWidget(
        ScreenParts::note(QStringLiteral("Terms version ") +
                          QString::fromUtf8(Terms::version.data(), static_cast<int>(Terms::version.size()))));
    layout->addWidget(ScreenParts::heading(QStringLiteral("What Velmora may do")));
    for (const auto scope : allCases<ConsentScope>()) {
        auto* box = new QCheckBox(ScreenParts::text(title(scope)) +
                                  (isRequired(scope) ? QStringLiteral(" (required)") : QString()));
        box->setChecked(isRequired(scope));
        box->setEnabled(!isRequired(scope));
        boxes_[scope] = box;
        layout->addWidget(box);
        auto* detail = ScreenParts::note(ScreenParts::text(explanation(scope)));
        detail->setContentsMargins(24, 0, 0, 4);
        layout->addWidget(detail);
    }
    layout->addWidget(
        ScreenParts::note(QStringLiteral("You can change these at any time in Settings, "
                                         "Privacy & Consent.")));
    error_->hide();
    layout->addWidget(error_);
    auto* buttons = new QDialogButtonBox;
    auto* accept = buttons->addButton(QStringLiteral("Accept"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QStringLiteral("Quit"), QDialogButtonBox::RejectRole);
    accept->setDefault(true);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &ConsentSheet::acceptChoice);
    connect(buttons, &QDialogButtonBox::rejected, this, [this] {
        reject();
        Q_EMIT declined();
    });
}

void ConsentSheet::acceptChoice() {
    std::vector<ConsentScope> chosen;
    for (const auto& [scope, box] : boxes_)
        if (box->isChecked() && !isRequired(scope)) chosen.push_back(scope);
    if (!model_.accept(chosen)) {
        error_->setText(ScreenParts::text(model_.error()));
        error_->show();
        return;
    }
    accept();
}

}  // namespace corvel::desktop
