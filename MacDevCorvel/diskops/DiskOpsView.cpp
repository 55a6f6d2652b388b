#include "diskops/DiskOpsView.h"

#include "diskops/DiskOpsModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"
#include "widgets/TrafficLight.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::note;
using ScreenParts::text;

QString objectLine(const DiskObject& object) {
    QString line = text(object.name.empty() ? object.identifier : object.name);
    line += QStringLiteral("  ·  ") + text(label(object.kind)) + QStringLiteral(" ") + text(object.identifier);
    return line;
}

QString facts(const DiskObject& object) {
    QStringList parts{text(label(object.kind)) + QStringLiteral(" ") + text(object.identifier),
                      ToolParts::bytes(object.sizeBytes)};
    if (object.fileSystem) parts << text(*object.fileSystem);
    if (object.mountPoint) parts << QStringLiteral("mounted at ") + text(*object.mountPoint);
    parts << (object.isInternal ? QStringLiteral("internal") : QStringLiteral("external"));
    if (object.isBootVolume) parts << QStringLiteral("startup");
    if (object.isEjectable) parts << QStringLiteral("ejectable");
    if (!object.isWritable) parts << QStringLiteral("read-only");
    return parts.join(QStringLiteral(" · "));
}

}  // namespace

DiskOpsView::DiskOpsView(DiskOpsModel& model, QWidget* parent)
    : QWidget(parent), model_(model), objects_(new QListWidget), detail_(new QScrollArea) {
    confirm_ = [](QWidget* owner, const QString& question) {
        return QMessageBox::question(owner, QStringLiteral("Confirm"), question, QMessageBox::Cancel | QMessageBox::Ok,
                                     QMessageBox::Cancel) == QMessageBox::Ok;
    };
    auto* layout = ToolParts::page(this, QStringLiteral("Disk Operations"));
    auto* columns = new QHBoxLayout;
    objects_->setAccessibleName(QStringLiteral("Disks and volumes"));
    objects_->setFixedWidth(300);
    objects_->setTextElideMode(Qt::ElideMiddle);
    objects_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    columns->addWidget(objects_);
    detail_->setWidgetResizable(true);
    detail_->setFrameShape(QFrame::NoFrame);
    columns->addWidget(detail_, 1);
    layout->addLayout(columns, 1);

    connect(objects_, &QListWidget::currentRowChanged, this, [this](int row) { model_.select(row); });
    connect(&model_, &DiskOpsModel::changed, this, &DiskOpsView::rebuild);
    rebuild();
}

void DiskOpsView::rebuild() {
    // The list changes only with the targets; rebuilding it on every change would lose the focus.
    if (objects_->count() != static_cast<int>(model_.targets().size())) {
        const QSignalBlocker quiet(objects_);
        objects_->clear();
        for (const auto& target : model_.targets()) objects_->addItem(objectLine(target.object));
    }
    if (objects_->currentRow() != model_.selected()) {
        const QSignalBlocker quiet(objects_);
        objects_->setCurrentRow(model_.selected());
    }

    auto* page = ToolParts::refill(detail_);
    const auto* target = model_.target();
    if (!model_.isLoaded()) {
        page->addWidget(note(QStringLiteral("Reading the machine…")));
    } else if (!target) {
        page->addWidget(note(QStringLiteral("No disks or volumes to act on.")));
    } else {
        auto* name =
            ScreenParts::heading(text(target->object.name.empty() ? target->object.identifier : target->object.name));
        name->setContentsMargins(0, 0, 0, 2);
        page->addWidget(name);
        page->addWidget(note(facts(target->object)));

        page->addWidget(ScreenParts::heading(QStringLiteral("Operations")));
        auto* grid = new QGridLayout;
        grid->setHorizontalSpacing(12);
        int row = 0;
        for (const auto& offered : model_.availability()) {
            auto* check = new QPushButton(text(title(offered.operation)) + QStringLiteral(" — Check…"));
            check->setEnabled(offered.isEnabled && !model_.isBusy());
            check->setToolTip(QStringLiteral("Run the preflight checks; nothing is changed"));
            const auto operation = offered.operation;
            connect(check, &QPushButton::clicked, this, [this, operation] { model_.preflight(operation); });
            grid->addWidget(check, row, 0);
            grid->addWidget(note(offered.reason ? text(*offered.reason)
                                                : (offered.isEnabled ? QStringLiteral("Available")
                                                                     : QStringLiteral("Not available now"))),
                            row, 1);
            ++row;
        }
        if (row == 0) grid->addWidget(note(QStringLiteral("Nothing can be done with this object.")), 0, 0);
        grid->setColumnStretch(1, 1);
        page->addLayout(grid);

        if (model_.isBusy()) page->addWidget(note(QStringLiteral("Working…")));
        if (const auto& report = model_.report()) {
            page->addWidget(ScreenParts::heading(QStringLiteral("Preflight: ") + text(title(report->operation))));
            auto* checks = new QGridLayout;
            checks->setHorizontalSpacing(10);
            int line = 0;
            for (const auto& check : report->checks) {
                checks->addWidget(new TrafficLight(toneOf(check.status), text(label(check.status))), line, 0);
                checks->addWidget(new QLabel(text(check.title)), line, 1);
                checks->addWidget(ScreenParts::wrapped(text(check.detail)), line, 2);
                ++line;
            }
            checks->setColumnStretch(2, 1);
            page->addLayout(checks);
            if (!report->processes.empty())
                page->addWidget(note(QStringLiteral("%1 process(es) use files on it.").arg(report->processes.size())));
            const auto refusal = model_.runRefusal();
            auto* run = new QPushButton(text(title(report->operation)) + QStringLiteral("…"));
            run->setEnabled(!refusal && !model_.isBusy());
            connect(run, &QPushButton::clicked, this, &DiskOpsView::runConfirmed);
            auto* bar = new QHBoxLayout;
            bar->addWidget(run);
            if (refusal)
                bar->addWidget(ToolParts::toned(Tone::caution, text(*refusal)), 1);
            else
                bar->addStretch(1);
            page->addLayout(bar);
        }
        if (const auto& outcome = model_.outcome()) {
            page->addWidget(ScreenParts::heading(QStringLiteral("Outcome")));
            page->addWidget(ToolParts::toned(outcome->succeeded ? Tone::good : Tone::bad,
                                             text(outcome->target) + QStringLiteral(": ") + text(outcome->outcome)));
        }
        if (!model_.error().empty()) page->addWidget(ToolParts::toned(Tone::bad, text(model_.error())));
    }

    page->addWidget(ScreenParts::heading(QStringLiteral("Audit log")));
    if (model_.logProblem()) page->addWidget(ToolParts::toned(Tone::caution, text(*model_.logProblem())));
    if (model_.log().empty()) {
        page->addWidget(note(QStringLiteral("No operations recorded yet. Every confirmed operation is logged here.")));
    } else {
        auto* table = ToolParts::table({"Date", "Operation", "Target", "Outcome"});
        for (const auto& entry : model_.log())
            ToolParts::addRow(table,
                              {ToolParts::date(entry.date), text(title(entry.operation)), text(entry.target),
                               (entry.succeeded ? QStringLiteral("✓ ") : QStringLiteral("✗ ")) + text(entry.outcome)});
        ToolParts::fit(table);
        page->addWidget(table);
    }
    page->addStretch(1);
}

void DiskOpsView::runConfirmed() {
    if (model_.runRefusal()) return;
    if (confirm_(this, model_.confirmationText())) model_.run();
}

}  // namespace corvel::desktop
