#include "migration/MigrationView.h"

#include "common/ByteFormat.h"
#include "migration/MigrationModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"
#include "widgets/TrafficLight.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::heading;
using ScreenParts::note;
using ScreenParts::text;

QString typed(const QLineEdit* edit) {
    return edit->text().trimmed();
}

void list(QVBoxLayout* page, const QString& title, const std::vector<std::string>& lines, bool numbered) {
    if (lines.empty()) return;
    page->addWidget(heading(title));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        auto* line = ScreenParts::wrapped((numbered ? QStringLiteral("%1. ").arg(i + 1) : QString()) + text(lines[i]));
        line->setTextInteractionFlags(Qt::TextSelectableByMouse);
        page->addWidget(line);
    }
}

void showPlan(QVBoxLayout* page, const MigrationPlan& plan) {
    page->addWidget(ToolParts::toned(
        plan.isReady ? Tone::good : Tone::bad,
        plan.isReady ? QStringLiteral("Ready for review: no blockers.")
                     : QStringLiteral("Blocked: %1 blocker(s) to resolve first.").arg(plan.blockers.size())));
    page->addWidget(note(QStringLiteral("A plan for review only; Velmora moves, copies and deletes nothing.")));
    QString destination = text(plan.destination);
    if (plan.targetVolume)
        destination += QStringLiteral("  on ") + text(*plan.targetVolume) + QStringLiteral(", ") +
                       ToolParts::bytes(plan.targetAvailableBytes.value_or(0)) + QStringLiteral(" free");
    page->addWidget(ScreenParts::wrapped(QStringLiteral("Workspace: ") + text(plan.source) + QStringLiteral(" (") +
                                         ToolParts::bytes(plan.allocatedBytes) + QStringLiteral(" allocated)")));
    page->addWidget(ScreenParts::wrapped(QStringLiteral("Destination: ") + destination));
    page->addWidget(heading(QStringLiteral("Blockers (%1)").arg(plan.blockers.size())));
    if (plan.blockers.empty()) page->addWidget(note(QStringLiteral("None.")));
    for (const auto& blocker : plan.blockers)
        page->addWidget(ToolParts::toned(toneOf(blocker.kind),
                                         text(label(blocker.kind)) + QStringLiteral(": ") + text(blocker.message)));
    page->addWidget(heading(QStringLiteral("Would break after the move (%1)").arg(plan.breakingPaths.size())));
    if (plan.breakingPaths.empty()) page->addWidget(note(QStringLiteral("Nothing found that names the old path.")));
    for (const auto& broken : plan.breakingPaths) {
        QString where = text(broken.path);
        if (broken.lineNumber) where += QStringLiteral(":%1").arg(*broken.lineNumber);
        page->addWidget(ScreenParts::wrapped(text(label(broken.kind)) + QStringLiteral("  ") + where));
        page->addWidget(
            note(QStringLiteral("    ") + text(broken.line) + QStringLiteral("\n    fix: ") + text(broken.fix)));
    }
    list(page, QStringLiteral("Steps"), plan.steps, true);
    list(page, QStringLiteral("Commands for review (Velmora runs none of them)"), plan.commands, false);
    list(page, QStringLiteral("Rollback"), plan.rollback, false);
    list(page, QStringLiteral("Notes"), plan.notes, false);
}

void showComparison(QVBoxLayout* page, const TreeComparison& result) {
    if (result.wasCancelled)
        page->addWidget(ToolParts::toned(Tone::caution, QStringLiteral("Interrupted: the comparison is partial.")));
    else if (result.isIdentical)
        page->addWidget(ToolParts::toned(Tone::good, QStringLiteral("Identical: the copy matches the source.")));
    else
        page->addWidget(
            ToolParts::toned(Tone::bad, QStringLiteral("Different: %1 difference(s).").arg(result.differences.size())));
    page->addWidget(note(QStringLiteral("Compared %1 entries; %2 files hashed on both sides (%3), by content.")
                             .arg(result.entriesCompared)
                             .arg(result.filesHashed)
                             .arg(ToolParts::bytes(result.bytesHashed))));
    if (!result.differences.empty()) {
        auto* table = ToolParts::table({"Difference", "Path", "Detail"});
        for (const auto& difference : result.differences)
            ToolParts::addRow(table, {text(label(difference.kind)),
                                      difference.path.empty() ? QStringLiteral(".") : text(difference.path),
                                      text(difference.detail)});
        ToolParts::fit(table);
        page->addWidget(table);
    }
    list(page, QStringLiteral("Skipped, never opened (%1)").arg(result.skipped.size()), result.skipped, false);
}

QPushButton* browse(QWidget* owner, QLineEdit* edit) {
    auto* button = new QPushButton(QStringLiteral("Choose…"));
    QObject::connect(button, &QPushButton::clicked, owner, [owner, edit] {
        const auto folder = QFileDialog::getExistingDirectory(owner, QStringLiteral("Choose a folder"), edit->text());
        if (!folder.isEmpty()) edit->setText(folder);
    });
    return button;
}

}  // namespace

MigrationView::MigrationView(MigrationModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      projects_(new QListWidget),
      workspace_(new QLineEdit),
      target_(new QLineEdit),
      copy_(new QLineEdit),
      plan_(new QPushButton(QStringLiteral("Make Plan"))),
      verify_(new QPushButton(QStringLiteral("Verify Copy"))),
      cancel_(new QPushButton(QStringLiteral("Cancel"))),
      progress_(ScreenParts::note({})),
      result_(new QScrollArea) {
    auto* layout = ToolParts::page(this, QStringLiteral("Migration"));
    auto* top = new QHBoxLayout;
    auto* left = new QVBoxLayout;
    left->addWidget(new QLabel(QStringLiteral("Projects")));
    projects_->setAccessibleName(QStringLiteral("Projects"));
    projects_->setFixedWidth(280);
    left->addWidget(projects_, 1);
    top->addLayout(left);

    auto* form = new QGridLayout;
    const std::pair<const char*, QLineEdit*> fields[] = {
        {"Workspace", workspace_}, {"Target folder", target_}, {"Copy to verify", copy_}};
    int row = 0;
    for (const auto& [name, edit] : fields) {
        edit->setAccessibleName(QString::fromUtf8(name));
        form->addWidget(new QLabel(QString::fromUtf8(name)), row, 0);
        form->addWidget(edit, row, 1);
        form->addWidget(browse(this, edit), row, 2);
        ++row;
    }
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(plan_);
    buttons->addWidget(verify_);
    buttons->addWidget(cancel_);
    buttons->addWidget(progress_, 1);
    form->addLayout(buttons, row++, 1, 1, 2);
    form->setRowStretch(row, 1);
    top->addLayout(form, 1);
    layout->addLayout(top);
    result_->setWidgetResizable(true);
    result_->setFrameShape(QFrame::NoFrame);
    layout->addWidget(result_, 1);

    connect(projects_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
        if (item) workspace_->setText(item->data(Qt::UserRole).toString());
    });
    connect(plan_, &QPushButton::clicked, this,
            [this] { model_.plan(typed(workspace_).toStdString(), typed(target_).toStdString()); });
    connect(verify_, &QPushButton::clicked, this,
            [this] { model_.verify(typed(workspace_).toStdString(), typed(copy_).toStdString()); });
    connect(cancel_, &QPushButton::clicked, &model_, &MigrationModel::cancel);
    connect(&model_, &MigrationModel::changed, this, &MigrationView::rebuild);
    connect(&model_, &MigrationModel::progressChanged, this, &MigrationView::showProgress);
    rebuild();
}

void MigrationView::showProgress() {
    if (model_.work() == MigrationModel::Work::none) {
        progress_->clear();
        return;
    }
    const auto& now = model_.progress();
    progress_->setText(QStringLiteral("%1: %2 files, %3")
                           .arg(now.phase.empty() ? QStringLiteral("Starting") : text(now.phase))
                           .arg(now.files)
                           .arg(ToolParts::bytes(now.bytes)));
}

void MigrationView::rebuild() {
    if (projects_->count() != static_cast<int>(model_.projects().size())) {
        projects_->clear();
        for (const auto& project : model_.projects()) {
            // Size first, then what its tools would rebuild: what a move would take, and what it need not.
            auto label = text(project.name) + QStringLiteral("  ·  ") + ToolParts::bytes(project.allocatedBytes);
            if (project.rebuildableBytes > 0)
                label += QStringLiteral(" (%1 rebuildable)").arg(ToolParts::bytes(project.rebuildableBytes));
            auto* item = new QListWidgetItem(label, projects_);
            item->setData(Qt::UserRole, text(project.path));
            item->setToolTip(text(project.path));
        }
    }
    const bool working = model_.work() != MigrationModel::Work::none;
    plan_->setEnabled(!working);
    verify_->setEnabled(!working);
    cancel_->setEnabled(working);
    showProgress();

    auto* page = ToolParts::refill(result_);
    if (!model_.error().empty()) page->addWidget(ToolParts::toned(Tone::bad, text(model_.error())));
    if (model_.wasCancelled() && !working && !model_.lastComparison())
        page->addWidget(ToolParts::toned(Tone::caution, QStringLiteral("Interrupted: no plan was made.")));
    if (model_.loadingProjects())
        page->addWidget(note(QStringLiteral("Looking for projects under the project roots…")));
    else if (model_.projects().empty())
        page->addWidget(
            note(QStringLiteral("No projects found under the project roots (Settings) or the usual "
                                "folders of the home folder: type a workspace folder above.")));
    if (const auto& plan = model_.lastPlan()) showPlan(page, *plan);
    if (const auto& comparison = model_.lastComparison()) showComparison(page, *comparison);
    if (!working && !model_.lastPlan() && !model_.lastComparison() && model_.error().empty())
        page->addWidget(
            note(QStringLiteral("Choose a workspace and a target folder, then Make Plan; after copying, "
                                "Verify Copy compares the copy with the original by content.")));
    page->addStretch(1);
}

}  // namespace corvel::desktop
