#include "developer/DeveloperView.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "developer/DeveloperModel.h"
#include "widgets/ListTable.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::text;

QString bytes(std::int64_t amount) {
    return QString::fromStdString(ByteFormat::string(amount));
}

}  // namespace

DeveloperView::DeveloperView(DeveloperModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      status_(new QLabel),
      measure_(new QPushButton(QStringLiteral("Measure again"))),
      cancel_(new QPushButton(QStringLiteral("Cancel"))),
      table_(ListTable::make({QStringLiteral("Location"), QStringLiteral("Category"), QStringLiteral("Size"),
                              QStringLiteral("Files"), QStringLiteral("How to clear it")},
                             4, {2, 3})) {
    auto* page = ToolParts::page(this, QStringLiteral("Developer storage"));
    auto* bar = new QHBoxLayout;
    status_->setTextFormat(Qt::PlainText);
    status_->setMinimumWidth(100);
    bar->addWidget(status_, 1);
    bar->addWidget(measure_);
    bar->addWidget(cancel_);
    page->addLayout(bar);
    table_->setAccessibleName(QStringLiteral("Developer locations"));
    page->addWidget(table_, 1);
    page->addWidget(ScreenParts::note(
        QStringLiteral("Sizes are the allocated size of the files below each folder; a location that does not exist "
                       "on this machine is shown as not present.")));

    connect(measure_, &QPushButton::clicked, &model_, &DeveloperModel::start);
    connect(cancel_, &QPushButton::clicked, &model_, &DeveloperModel::cancel);
    connect(&model_, &DeveloperModel::stateChanged, this, &DeveloperView::stateChanged);
    connect(&model_, &DeveloperModel::progressChanged, this, &DeveloperView::progressChanged);
    stateChanged();
}

void DeveloperView::stateChanged() {
    using State = DeveloperModel::State;
    const auto state = model_.state();
    measure_->setEnabled(state != State::measuring);
    cancel_->setEnabled(state == State::measuring);
    if (state == State::measuring) {
        progressChanged();
        return;
    }
    table_->clear();
    for (const auto& row : model_.rows()) {
        const auto& location = row.location;
        QStringList cells{text(location.name), text(label(location.category))};
        if (row.measurement)
            cells << bytes(row.measurement->allocatedBytes)
                  << QLocale().toString(static_cast<qlonglong>(row.measurement->fileCount));
        else
            cells << QStringLiteral("not present") << QString();
        cells << text(location.note);
        auto* item = ListTable::addRow(table_, cells);
        item->setToolTip(0, text(location.path));
        if (!row.measurement)
            for (int column = 0; column < cells.size(); ++column)
                item->setForeground(column, palette().brush(QPalette::PlaceholderText));
    }
    switch (state) {
        case State::idle:
            status_->setText(QStringLiteral("Not measured yet."));
            break;
        case State::cancelled:
        case State::finished: {
            QString line = QStringLiteral("Total: %1 in %2 of %3 locations")
                               .arg(bytes(model_.totalBytes()))
                               .arg(model_.presentCount())
                               .arg(model_.rows().size());
            if (state == State::cancelled) line = QStringLiteral("Cancelled: ") + line + QStringLiteral(" so far");
            status_->setText(line);
            break;
        }
        case State::measuring:
            break;
    }
}

void DeveloperView::progressChanged() {
    if (model_.state() != DeveloperModel::State::measuring) return;
    const auto& now = model_.progress();
    status_->setText(QStringLiteral("Measuring %1… %2 files · %3")
                         .arg(text(model_.current()))
                         .arg(now.files)
                         .arg(bytes(now.allocatedBytes)));
}

}  // namespace corvel::desktop
