#include "about/AboutView.h"

#include "about/AboutModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::note;
using ScreenParts::text;

}  // namespace

AboutView::AboutView(AboutModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      check_(new QPushButton(QStringLiteral("Check for Updates"))),
      answer_(new QScrollArea) {
    auto* layout = ToolParts::page(this, QStringLiteral("About Velmora"));
    layout->addWidget(ScreenParts::wrapped(QStringLiteral("Version ") + text(AboutModel::version())));
    layout->addWidget(
        note(QStringLiteral("Velmora reads your disks and volumes and explains them. It changes "
                            "nothing without asking, and only what you allowed.")));
    auto* bar = new QHBoxLayout;
    bar->addWidget(check_);
    bar->addStretch(1);
    layout->addLayout(bar);
    answer_->setWidgetResizable(true);
    answer_->setFrameShape(QFrame::NoFrame);
    answer_->setMaximumHeight(170);
    layout->addWidget(answer_);

    layout->addWidget(ScreenParts::heading(QStringLiteral("Libraries and licences")));
    auto* table = ToolParts::table({"Library", "Licence", "Used for"});
    for (const auto& library : AboutModel::libraries())
        ToolParts::addRow(table, {QString::fromUtf8(library.name), QString::fromUtf8(library.licence),
                                  QString::fromUtf8(library.purpose)});
    ToolParts::fit(table);
    layout->addWidget(table);
    layout->addStretch(1);

    connect(check_, &QPushButton::clicked, &model_, &AboutModel::checkForUpdate);
    connect(&model_, &AboutModel::changed, this, &AboutView::rebuild);
    rebuild();
}

void AboutView::rebuild() {
    check_->setEnabled(!model_.isChecking());
    auto* page = ToolParts::refill(answer_);
    if (model_.isChecking()) {
        page->addWidget(note(QStringLiteral("Asking the release channel…")));
    } else if (!model_.error().empty()) {
        page->addWidget(ToolParts::toned(Tone::caution, text(model_.error())));
    } else if (const auto& check = model_.check()) {
        if (!check->isNewer) {
            page->addWidget(
                ToolParts::toned(Tone::good, QStringLiteral("You have the newest Velmora (%1); the latest "
                                                            "release is %2.")
                                                 .arg(text(check->currentVersion), text(check->availableVersion))));
        } else {
            page->addWidget(
                ToolParts::toned(Tone::notice, QStringLiteral("Velmora %1 is available (you have %2).")
                                                   .arg(text(check->availableVersion), text(check->currentVersion))));
            for (const auto& line : check->notesPreview) page->addWidget(ScreenParts::wrapped(text(line)));
            if (!check->release.url.empty()) page->addWidget(note(text(check->release.url)));
            page->addWidget(note(QStringLiteral("Install it with 'velmora update install'.")));
        }
    } else {
        page->addWidget(note(QStringLiteral("Not checked yet. Checking asks GitHub through the gh program.")));
    }
    page->addStretch(1);
}

}  // namespace corvel::desktop
