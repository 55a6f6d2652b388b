#include "processes/ProcessesView.h"

#include "processes/ProcessGrouping.h"
#include "processes/ProcessesModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::text;

constexpr int groupRole = Qt::UserRole;

}  // namespace

ProcessesView::ProcessesView(ProcessesModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      status_(ScreenParts::note({})),
      all_(new QCheckBox(QStringLiteral("All users"))),
      reload_(new QPushButton(QStringLiteral("Sample Again"))),
      groups_(ToolParts::table({"Name", "Kind", "Processes", "CPU", "Memory"})),
      decision_(ScreenParts::note({})),
      outcome_(ScreenParts::wrapped({})),
      records_(ToolParts::table({"Date", "Action", "Name", "Outcome"})) {
    confirm_ = [](QWidget* owner, const QString& question) {
        return QMessageBox::question(owner, QStringLiteral("Confirm"), question, QMessageBox::Cancel | QMessageBox::Ok,
                                     QMessageBox::Cancel) == QMessageBox::Ok;
    };
    auto* layout = ToolParts::page(this, QStringLiteral("Processes"));
    auto* bar = new QHBoxLayout;
    bar->addWidget(status_, 1);
    bar->addWidget(all_);
    bar->addWidget(reload_);
    layout->addLayout(bar);
    groups_->setSelectionMode(QAbstractItemView::SingleSelection);
    groups_->setFocusPolicy(Qt::StrongFocus);
    groups_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    groups_->setAccessibleName(QStringLiteral("Process groups"));
    layout->addWidget(groups_, 3);

    auto* actionBar = new QHBoxLayout;
    for (const auto action : allCases<ProcessAction>()) {
        auto* button = new QPushButton(text(title(action)) + QStringLiteral("…"));
        connect(button, &QPushButton::clicked, this, [this, action] {
            const auto* item = groups_->currentItem();
            if (!item) return;
            const auto groups = model_.groups();
            const auto index = item->data(0, groupRole).toInt();
            if (index < 0 || index >= static_cast<int>(groups.size())) return;
            const auto& group = groups[static_cast<std::size_t>(index)];
            if (const auto refusal = model_.actionRefusal(action, group)) {
                decision_->setText(text(*refusal));
                return;
            }
            if (confirm_(this, model_.confirmationText(action, group))) model_.act(action, group);
        });
        actions_.push_back(button);
        actionBar->addWidget(button);
    }
    actionBar->addWidget(decision_, 1);
    layout->addLayout(actionBar);
    layout->addWidget(outcome_);
    layout->addWidget(ScreenParts::heading(QStringLiteral("Action records")));
    records_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    layout->addWidget(records_, 1);

    connect(all_, &QCheckBox::toggled, &model_, &ProcessesModel::setShowAll);
    connect(reload_, &QPushButton::clicked, &model_, &ProcessesModel::load);
    connect(groups_, &QTreeWidget::currentItemChanged, this, &ProcessesView::chosenChanged);
    connect(&model_, &ProcessesModel::changed, this, &ProcessesView::rebuild);
    rebuild();
}

void ProcessesView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // Sampling costs half a second of a pool thread: only when someone looks.
    if (!model_.isLoaded()) model_.load();
}

void ProcessesView::rebuild() {
    const auto unavailable = model_.unavailable();
    for (auto* widget : std::initializer_list<QWidget*>{all_, reload_, groups_})
        widget->setEnabled(!unavailable && !model_.isBusy());
    const auto groups = model_.groups();
    if (unavailable)
        status_->setText(text(*unavailable));
    else if (!model_.error().empty())
        status_->setText(text(model_.error()));
    else if (model_.isBusy())
        status_->setText(QStringLiteral("Sampling…"));
    else
        status_->setText(QStringLiteral("%1 groups, busiest first").arg(groups.size()));

    const QString chosen = groups_->currentItem() ? groups_->currentItem()->data(1, groupRole).toString() : QString();
    {
        const QSignalBlocker quiet(groups_);
        groups_->clear();
        // The heading names the memory figure when all rows share it; otherwise each cell does.
        const auto oneKind = ProcessGrouping::sharedMemoryKind(groups);
        groups_->headerItem()->setText(
            4, oneKind ? QStringLiteral("Memory (%1)").arg(text(label(*oneKind))) : QStringLiteral("Memory"));
        if (oneKind) groups_->headerItem()->setToolTip(4, text(meaning(*oneKind)));
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const auto& group = groups[i];
            auto memory = ToolParts::memory(group.memoryBytes);
            // An unmeasured figure ("—") has no kind to name.
            if (!oneKind && group.memoryBytes > 0) memory += QStringLiteral(" ") + text(label(group.memoryKind));
            auto* item = ToolParts::addRow(
                groups_, {text(group.name), text(label(group.kind)), QString::number(group.pids.size()),
                          QString::number(group.cpuPercent, 'f', 1) + QStringLiteral(" %"), memory});
            item->setData(0, groupRole, static_cast<int>(i));
            item->setData(1, groupRole, QString::fromStdString(group.id));
            if (QString::fromStdString(group.id) == chosen) groups_->setCurrentItem(item);
        }
        for (int column = 1; column < 5; ++column) groups_->resizeColumnToContents(column);
        groups_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        groups_->header()->setStretchLastSection(false);
    }
    chosenChanged();
    outcome_->setText(text(model_.lastOutcome()));
    outcome_->setVisible(!model_.lastOutcome().empty());

    records_->clear();
    for (auto it = model_.records().rbegin(); it != model_.records().rend(); ++it)
        ToolParts::addRow(records_,
                          {ToolParts::date(it->date), text(title(it->action)), text(it->name), text(it->outcome)});
    if (model_.records().empty())
        ToolParts::addRow(records_, {QStringLiteral("No process actions recorded yet."), {}, {}, {}});
    for (int column = 0; column < 3; ++column) records_->resizeColumnToContents(column);
}

void ProcessesView::chosenChanged() {
    const bool chosen = groups_->currentItem() != nullptr && !model_.isBusy() && !model_.unavailable();
    for (auto* button : actions_) button->setEnabled(chosen);
    decision_->setText(chosen ? QString() : QStringLiteral("Choose a group to act on it."));
}

}  // namespace corvel::desktop
