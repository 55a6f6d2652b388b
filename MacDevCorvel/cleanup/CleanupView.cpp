#include "cleanup/CleanupView.h"

#include "cleanup/CleanupModel.h"
#include "cleanup/ManualCleanup.h"
#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "widgets/ListTable.h"
#include "widgets/Palette.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::note;
using ScreenParts::text;

QString bytes(std::int64_t amount) {
    return QString::fromStdString(ByteFormat::string(amount));
}

QString count(std::int64_t value) {
    return QLocale().toString(static_cast<qlonglong>(value));
}

QString dateText(TimePoint time) {
    const auto iso = QString::fromStdString(ISO8601::format(std::chrono::floor<std::chrono::seconds>(time)));
    return iso.left(10) + QLatin1Char(' ') + iso.mid(11, 5) + QStringLiteral(" UTC");
}

void addEligible(QVBoxLayout* page, const CleanupSimulation& simulation) {
    page->addWidget(ScreenParts::heading(QStringLiteral("Eligible (%1)").arg(simulation.eligible.size())));
    if (simulation.eligible.empty()) {
        page->addWidget(note(QStringLiteral("None of the selected items passes every safety rule.")));
        return;
    }
    auto* table = ListTable::make(
        {QStringLiteral("Exclusive"), QStringLiteral("Allocated"), QStringLiteral("Files"), QStringLiteral("Risk"),
         QStringLiteral("Category"), QStringLiteral("Changed"), QStringLiteral("Path")},
        6, {0, 1, 2});
    for (const auto& candidate : simulation.eligible) {
        const auto& classification = candidate.classification;
        const QString changed =
            candidate.lastModified ? dateText(*candidate.lastModified).left(10) : QStringLiteral("unknown");
        auto* item = ListTable::addRow(table, {bytes(candidate.exclusiveBytes), bytes(candidate.allocatedBytes),
                                               count(candidate.fileCount), text(label(classification.risk)),
                                               text(label(classification.category)), changed, text(candidate.path)});
        item->setForeground(3, Palette::tone(toneOf(classification.risk)));
        if (classification.hint)
            item->setToolTip(6, QStringLiteral("The owner's own way: ") + text(*classification.hint));
    }
    ListTable::fitHeight(table);
    page->addWidget(table);
}

void addExcluded(QVBoxLayout* page, const CleanupSimulation& simulation) {
    page->addWidget(
        ScreenParts::heading(QStringLiteral("Excluded by safety rules (%1)").arg(simulation.excluded.size())));
    if (simulation.excluded.empty()) {
        page->addWidget(note(QStringLiteral("None.")));
        return;
    }
    auto* table =
        ListTable::make({QStringLiteral("Exclusive"), QStringLiteral("Path"), QStringLiteral("Reason")}, 2, {0});
    for (const auto& exclusion : simulation.excluded) {
        auto* item = ListTable::addRow(
            table, {bytes(exclusion.candidate.exclusiveBytes), text(exclusion.candidate.path), text(exclusion.reason)});
        item->setForeground(2, Palette::tone(Tone::bad));
    }
    ListTable::fitHeight(table);
    page->addWidget(table);
}

QWidget* simulationPage(const CleanupModel& model) {
    auto* content = new QWidget;
    auto* page = new QVBoxLayout(content);
    page->setContentsMargins(0, 0, 0, 0);
    const auto& shown = model.shown();
    if (!shown) {
        page->addWidget(note(QStringLiteral(
            "No simulation yet. Select items on the Space screen and press “Simulate cleanup”, or pick a saved "
            "simulation below.")));
        page->addStretch(1);
        return content;
    }
    const auto& simulation = *shown;
    auto* header = ScreenParts::wrapped(
        QStringLiteral("Simulation of %1: nothing was deleted, moved or changed. Volume %2, %3 free.")
            .arg(dateText(simulation.createdAt), text(simulation.volumeName), bytes(simulation.volumeFreeBefore)));
    QFont font = header->font();
    font.setBold(true);
    header->setFont(font);
    page->addWidget(header);
    if (model.result() && model.result()->simulation.id == simulation.id) {
        for (const auto* list : {&model.result()->problems, &model.result()->warnings})
            for (const auto& problem : *list)
                page->addWidget(note(text(problem.path) + QStringLiteral(": ") + text(problem.reason)));
    }
    addEligible(page, simulation);
    addExcluded(page, simulation);
    page->addWidget(ScreenParts::heading(QStringLiteral("Checks")));
    for (const auto& check : simulation.checks) page->addWidget(ScreenParts::wrapped(text(check)));
    auto* recoverable = ScreenParts::wrapped(
        QStringLiteral("Recoverable: at least %1 (exclusive), at most %2 (allocated). Free space after: %3 (now %4).")
            .arg(bytes(simulation.estimatedRecoverableMinimum()), bytes(simulation.estimatedRecoverableMaximum()),
                 bytes(simulation.projectedFreeAfter()), bytes(simulation.volumeFreeBefore)));
    recoverable->setContentsMargins(0, 10, 0, 0);
    page->addWidget(recoverable);
    if (const auto command = ManualCleanup::removalCommand(simulation)) {
        auto* line = note(QStringLiteral("For your review only (Velmora runs none of it): ") + text(*command));
        line->setTextInteractionFlags(Qt::TextSelectableByMouse);
        page->addWidget(line);
    }
    page->addStretch(1);
    return content;
}

}  // namespace

CleanupView::CleanupView(CleanupModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      status_(new QLabel),
      cancel_(new QPushButton(QStringLiteral("Cancel"))),
      body_(new QScrollArea),
      history_(ListTable::make({QStringLiteral("Date"), QStringLiteral("Volume"), QStringLiteral("Eligible"),
                                QStringLiteral("Excluded"), QStringLiteral("Recoverable"), QStringLiteral("Id")},
                               1, {2, 3, 4})) {
    auto* page = ToolParts::page(this, QStringLiteral("Cleanup"));
    auto* bar = new QHBoxLayout;
    status_->setTextFormat(Qt::PlainText);
    status_->setMinimumWidth(100);
    bar->addWidget(status_, 1);
    bar->addWidget(cancel_);
    page->addLayout(bar);

    body_->setWidgetResizable(true);
    body_->setFrameShape(QFrame::NoFrame);
    auto* lower = new QWidget;
    auto* lowerLayout = new QVBoxLayout(lower);
    lowerLayout->setContentsMargins(0, 0, 0, 0);
    lowerLayout->addWidget(ScreenParts::heading(QStringLiteral("Saved simulations")));
    history_->setAccessibleName(QStringLiteral("Saved simulations"));
    lowerLayout->addWidget(history_, 1);
    auto* split = new QSplitter(Qt::Vertical);
    split->addWidget(body_);
    split->addWidget(lower);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 1);
    page->addWidget(split, 1);

    connect(cancel_, &QPushButton::clicked, &model_, &CleanupModel::cancel);
    connect(history_, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        model_.showSaved(static_cast<std::size_t>(history_->indexOfTopLevelItem(item)));
    });
    connect(&model_, &CleanupModel::stateChanged, this, &CleanupView::stateChanged);
    connect(&model_, &CleanupModel::progressChanged, this, &CleanupView::progressChanged);
    connect(&model_, &CleanupModel::historyChanged, this, &CleanupView::historyChanged);
    stateChanged();
    historyChanged();
}

void CleanupView::stateChanged() {
    using State = CleanupModel::State;
    const auto state = model_.state();
    cancel_->setVisible(state == State::simulating);
    QString line;
    switch (state) {
        case State::idle:
            line = QStringLiteral("Nothing is ever deleted here: a simulation only measures and checks.");
            break;
        case State::simulating:
            progressChanged();
            return;
        case State::finished:
            line = QStringLiteral("Simulated %1 selected items; saved in the history.").arg(model_.selection().size());
            break;
        case State::failed:
            line = QStringLiteral("Nothing could be simulated.");
            break;
    }
    for (const auto& problem : model_.problems()) line += QLatin1Char('\n') + text(problem);
    status_->setText(line);
    body_->setWidget(simulationPage(model_));
}

void CleanupView::progressChanged() {
    if (model_.state() != CleanupModel::State::simulating) return;
    const auto& now = model_.progress();
    status_->setText(QStringLiteral("Measuring the selection… %1 files · %2 · %3")
                         .arg(now.files)
                         .arg(bytes(now.allocatedBytes))
                         .arg(text(now.currentFolder)));
}

void CleanupView::historyChanged() {
    history_->clear();
    for (const auto& simulation : model_.history())
        ListTable::addRow(history_, {dateText(simulation.createdAt), text(simulation.volumeName),
                                     count(static_cast<std::int64_t>(simulation.eligible.size())),
                                     count(static_cast<std::int64_t>(simulation.excluded.size())),
                                     bytes(simulation.estimatedRecoverableMinimum()),
                                     QString::fromStdString(simulation.id.substr(0, 8))});
    if (model_.history().empty())
        ListTable::addRow(history_, {QStringLiteral("No simulations saved yet.")})->setFlags(Qt::NoItemFlags);
}

}  // namespace corvel::desktop
