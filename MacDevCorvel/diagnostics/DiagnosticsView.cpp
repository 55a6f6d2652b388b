#include "diagnostics/DiagnosticsView.h"

#include "common/EnumTable.h"
#include "diagnostics/DiagnosticsModel.h"
#include "widgets/FindingCard.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::text;

}  // namespace

DiagnosticsView::DiagnosticsView(DiagnosticsModel& model, QWidget* parent)
    : QWidget(parent), model_(model), filter_(new QComboBox), summary_(new QLabel), list_(new QScrollArea) {
    auto* page = ToolParts::page(this, QStringLiteral("Diagnostics"));
    auto* bar = new QHBoxLayout;
    bar->addWidget(summary_, 1);
    bar->addWidget(new QLabel(QStringLiteral("Show:")));
    filter_->setAccessibleName(QStringLiteral("Severity"));
    filter_->addItem(QStringLiteral("All severities"), -1);
    // Most serious first, as the findings are listed.
    const auto severities = allCases<Severity>();
    for (auto it = severities.rbegin(); it != severities.rend(); ++it)
        filter_->addItem(text(label(*it)), static_cast<int>(*it));
    bar->addWidget(filter_);
    page->addLayout(bar);
    list_->setWidgetResizable(true);
    list_->setFrameShape(QFrame::NoFrame);
    page->addWidget(list_, 1);

    connect(filter_, &QComboBox::currentIndexChanged, this, [this] {
        const int chosen = filter_->currentData().toInt();
        model_.setSeverityFilter(chosen < 0 ? std::nullopt : std::optional<Severity>(static_cast<Severity>(chosen)));
    });
    connect(&model_, &DiagnosticsModel::changed, this, &DiagnosticsView::rebuild);
    rebuild();
}

void DiagnosticsView::rebuild() {
    const auto& report = model_.diagnosis().report;
    if (!model_.isLoaded()) {
        summary_->setText(QStringLiteral("Reading the machine…"));
    } else {
        QStringList counts;
        for (const auto severity : {Severity::critical, Severity::warning, Severity::info})
            if (const auto n = report.count(severity))
                counts << QStringLiteral("%1 %2").arg(n).arg(text(label(severity)));
        summary_->setText(
            QStringLiteral("Health score %1/100 · %2")
                .arg(report.healthScore())
                .arg(counts.isEmpty() ? QStringLiteral("no findings") : counts.join(QStringLiteral(", "))));
    }
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto findings = model_.visibleFindings();
    if (model_.isLoaded() && findings.empty()) {
        layout->addWidget(ScreenParts::note(report.findings.empty() ? QStringLiteral("Nothing to report.")
                                                                    : QStringLiteral("No findings of this severity.")));
    }
    for (const auto& finding : findings) layout->addWidget(FindingCard::make(finding));
    layout->addStretch(1);
    list_->setWidget(content);
}

}  // namespace corvel::desktop
