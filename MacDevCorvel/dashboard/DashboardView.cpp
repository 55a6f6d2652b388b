#include "dashboard/DashboardView.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "dashboard/DashboardModel.h"
#include "monitoring/CapacityForecast.h"
#include "widgets/Palette.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"
#include "widgets/TrafficLight.h"
#include "widgets/UsageBar.h"

#include <QGridLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::note;
using ScreenParts::text;

QString bytes(std::int64_t amount) {
    return QString::fromStdString(ByteFormat::string(amount));
}

template <class E>
QString labelOf(E value) {
    return text(label(value));
}

QGridLayout* grid(QVBoxLayout* page) {
    auto* holder = new QWidget;
    auto* layout = new QGridLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setHorizontalSpacing(14);
    layout->setVerticalSpacing(6);
    page->addWidget(holder);
    return layout;
}

QLabel* bold(const QString& content) {
    auto* label = ScreenParts::wrapped(content);
    label->setWordWrap(false);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLabel* plain(const QString& content) {
    auto* label = ScreenParts::wrapped(content);
    label->setWordWrap(false);
    return label;
}

// A disk's or volume's name that opens its details: "disk:ID" or "volume:ID".
QLabel* detailLink(const QString& name, const QString& target, const std::function<void(QLabel*)>& wire) {
    auto* label =
        new QLabel(QStringLiteral("<a href=\"%1\"><b>%2</b></a>").arg(target.toHtmlEscaped(), name.toHtmlEscaped()));
    label->setTextFormat(Qt::RichText);
    label->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    label->setToolTip(QStringLiteral("Show the details of ") + name);
    wire(label);
    return label;
}

QString overallText(const DashboardModel& model) {
    const auto overall = model.overall();
    QString judgement = labelOf(overall.severity);
    if (overall.worstDimension) judgement += QStringLiteral(" (%1)").arg(labelOf(*overall.worstDimension));
    return QStringLiteral("Overall: %1 · health score %2/100")
        .arg(judgement)
        .arg(model.values().diagnosis.report.healthScore());
}

void addDisks(QVBoxLayout* page, const DashboardModel& model, const std::function<void(QLabel*)>& wire) {
    page->addWidget(ScreenParts::heading(QStringLiteral("Disks")));
    const auto& disks = model.snapshot().disks;
    if (disks.empty()) {
        page->addWidget(note(QStringLiteral("No physical disks found.")));
        return;
    }
    auto* rows = grid(page);
    int row = 0;
    for (const auto& disk : disks) {
        rows->addWidget(
            new TrafficLight(toneOf(disk.smartStatus), QStringLiteral("SMART: ") + labelOf(disk.smartStatus)), row, 0);
        rows->addWidget(
            detailLink(text(disk.displayName()), QStringLiteral("disk:") + QString::fromStdString(disk.id), wire), row,
            1);
        rows->addWidget(plain(text(disk.id)), row, 2);
        rows->addWidget(plain(bytes(disk.sizeBytes)), row, 3, Qt::AlignRight);
        rows->addWidget(plain(text(disk.connectionLabel())), row, 4);
        rows->addWidget(plain(QStringLiteral("SMART ") + labelOf(disk.smartStatus)), row, 5);
        ++row;
    }
    rows->setColumnStretch(6, 1);
}

void addVolumes(QVBoxLayout* page, const DashboardModel& model, const std::function<void(QLabel*)>& wire) {
    page->addWidget(ScreenParts::heading(QStringLiteral("Volumes")));
    const auto& volumes = model.snapshot().volumes;
    if (volumes.empty()) {
        page->addWidget(note(QStringLiteral("No mounted volumes found.")));
        return;
    }
    auto* rows = grid(page);
    int row = 0;
    for (const auto& volume : volumes) {
        auto* name = detailLink(text(volume.name), QStringLiteral("volume:") + QString::fromStdString(volume.id), wire);
        rows->addWidget(name, row, 0);
        rows->addWidget(plain(text(volume.mountPoint)), row, 1);
        if (volume.totalBytes > 0) {
            const double used = volume.usedFraction();
            const auto percent = QString::number(static_cast<int>(used * 100 + 0.5)) + QStringLiteral("% used");
            rows->addWidget(new UsageBar(used, percent), row, 2);
            rows->addWidget(
                plain(QStringLiteral("%1 free of %2").arg(bytes(volume.availableBytes), bytes(volume.totalBytes))), row,
                3);
        } else {
            rows->addWidget(note(QStringLiteral("size unknown")), row, 2, 1, 2);
        }
        if (const auto days = model.forecastFor(volume.id)) {
            auto* forecast = plain(text(CapacityForecast::describeBriefly(*days)));
            forecast->setStyleSheet(QStringLiteral("color: %1").arg(Palette::tone(Tone::caution).name()));
            rows->addWidget(forecast, row, 4);
        }
        ++row;
    }
    rows->setColumnStretch(2, 1);
}

void addHealth(QVBoxLayout* page, const DashboardModel& model) {
    page->addWidget(ScreenParts::heading(QStringLiteral("Health")));
    auto* rows = grid(page);
    int row = 0;
    for (const auto& assessment : model.health()) {
        rows->addWidget(new TrafficLight(toneOf(assessment.status), labelOf(assessment.status)), row, 0);
        rows->addWidget(bold(labelOf(assessment.dimension)), row, 1);
        rows->addWidget(plain(labelOf(assessment.status)), row, 2);
        auto* summary = ScreenParts::wrapped(text(assessment.summary));
        rows->addWidget(summary, row, 3);
        ++row;
    }
    rows->setColumnStretch(3, 1);
}

}  // namespace

DashboardView::DashboardView(DashboardModel& model, std::function<bool(Insight::Destination)> hasScreen,
                             QWidget* parent)
    : QScrollArea(parent), model_(model), hasScreen_(std::move(hasScreen)) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    connect(&model_, &DashboardModel::changed, this, &DashboardView::rebuild);
    rebuild();
}

void DashboardView::rebuild() {
    auto* content = new QWidget;
    auto* page = ToolParts::page(content, QStringLiteral("Dashboard"));
    if (!model_.isLoaded()) {
        page->addWidget(note(QStringLiteral("Reading the machine…")));
        page->addStretch(1);
        setWidget(content);
        return;
    }
    auto* overall = ScreenParts::wrapped(overallText(model_));
    overall->setStyleSheet(
        QStringLiteral("color: %1; font-weight: bold").arg(Palette::tone(toneOf(model_.overall().severity)).name()));
    page->addWidget(overall);
    const auto wire = [this](QLabel* label) {
        connect(label, &QLabel::linkActivated, this, &DashboardView::detailsRequested);
    };
    addDisks(page, model_, wire);
    addVolumes(page, model_, wire);
    addHealth(page, model_);

    page->addWidget(ScreenParts::heading(QStringLiteral("Insights")));
    const auto insights = model_.topInsights();
    if (insights.empty()) page->addWidget(note(QStringLiteral("Nothing stands out.")));
    auto* rows = grid(page);
    int row = 0;
    for (const auto& insight : insights) {
        rows->addWidget(new TrafficLight(toneOf(insight.severity), labelOf(insight.severity)), row, 0, Qt::AlignTop);
        auto* title = bold(text(insight.title));
        title->setWordWrap(true);
        rows->addWidget(title, row, 1);
        auto* action = new QPushButton(text(insight.actionTitle));
        const auto destination = insight.destination;
        if (hasScreen_ && hasScreen_(destination)) {
            connect(action, &QPushButton::clicked, this,
                    [this, destination] { Q_EMIT insightActionRequested(destination); });
        } else {
            action->setEnabled(false);
            action->setToolTip(labelOf(destination) + QStringLiteral(" has no screen in this version yet."));
        }
        rows->addWidget(action, row, 2, Qt::AlignTop | Qt::AlignRight);
        rows->addWidget(note(text(insight.detail)), row + 1, 1, 1, 2);
        row += 2;
    }
    rows->setColumnStretch(1, 1);
    if (model_.topInsights().size() < model_.values().insights.size())
        page->addWidget(
            note(QStringLiteral("%1 more insights.").arg(model_.values().insights.size() - insights.size())));

    if (!model_.values().warnings.empty()) {
        page->addWidget(ScreenParts::heading(QStringLiteral("Warnings")));
        for (const auto& warning : model_.values().warnings) page->addWidget(ScreenParts::wrapped(text(warning)));
    }
    page->addStretch(1);
    setWidget(content);
}

}  // namespace corvel::desktop
