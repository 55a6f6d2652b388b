#include "monitoring/MonitoringView.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "monitoring/CapacityForecast.h"
#include "monitoring/MonitoringModel.h"
#include "widgets/HistoryChart.h"
#include "widgets/ListTable.h"
#include "widgets/Palette.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

namespace corvel::desktop {
namespace {

using ScreenParts::note;
using ScreenParts::text;

QString bytes(std::int64_t amount) {
    return QString::fromStdString(ByteFormat::string(amount));
}

QString timeText(TimePoint time) {
    return QString::fromStdString(ISO8601::format(std::chrono::floor<std::chrono::seconds>(time)));
}

QString trendText(const std::optional<double>& bytesPerDay) {
    if (!bytesPerDay) return QStringLiteral("not enough samples");
    const auto amount = static_cast<std::int64_t>(std::llround(*bytesPerDay));
    if (amount == 0) return QStringLiteral("flat");
    return (amount > 0 ? QStringLiteral("+") : QString()) + bytes(amount) + QStringLiteral(" per day");
}

QString agentText(const MonitoringModel::Values& values) {
    QStringList parts;
    if (values.registration.mechanism)
        parts << QStringLiteral("Agent on (%1)").arg(text(label(*values.registration.mechanism)));
    else
        parts << QStringLiteral("Agent off: nothing records the free space while Velmora is closed");
    parts << (values.runningPid ? QStringLiteral("running, pid %1").arg(*values.runningPid)
                                : QStringLiteral("not running"));
    if (values.status && values.status->lastCycleAt)
        parts << QStringLiteral("last cycle %1").arg(timeText(*values.status->lastCycleAt));
    if (values.status && !values.status->monitoringEnabled)
        parts << QStringLiteral("monitoring is off in the settings");
    return parts.join(QStringLiteral(" · "));
}

void addVolume(QVBoxLayout* page, const VolumeHistory& volume) {
    page->addWidget(ScreenParts::heading(text(volume.volumeName)));
    const auto& latest = volume.latest();
    auto* facts =
        ScreenParts::wrapped(QStringLiteral("%1 free of %2 · %3 %4 · trend %5")
                                 .arg(bytes(latest.availableBytes), bytes(latest.totalBytes))
                                 .arg(volume.samples.size())
                                 .arg(volume.samples.size() == 1 ? QStringLiteral("sample") : QStringLiteral("samples"))
                                 .arg(trendText(volume.trendBytesPerDay)));
    page->addWidget(facts);
    auto* forecast = ScreenParts::wrapped(text(volume.forecastText(CapacityForecast::standardMinimumSpan)));
    if (volume.daysUntilFull)
        forecast->setStyleSheet(QStringLiteral("color: %1").arg(Palette::tone(Tone::caution).name()));
    else
        forecast->setForegroundRole(QPalette::PlaceholderText);
    page->addWidget(forecast);
    auto* chart = new HistoryChart;
    chart->setHistory(volume);
    page->addWidget(chart);
}

void addEvents(QVBoxLayout* page, const QString& title, const std::vector<MonitorEvent>& events, const QString& none) {
    page->addWidget(ScreenParts::heading(title));
    if (events.empty()) {
        page->addWidget(note(none));
        return;
    }
    auto* table = ListTable::make(
        {QStringLiteral("Time"), QStringLiteral("Kind"), QStringLiteral("Subject"), QStringLiteral("What")}, 3);
    for (const auto& event : events) {
        const Tone tone = event.severity ? toneOf(*event.severity) : toneOf(event.kind);
        auto* item = ListTable::addRow(table, {timeText(event.timestamp), text(label(event.kind)),
                                               text(event.subjectName.empty() ? event.subjectID : event.subjectName),
                                               text(event.title + ": " + event.message)});
        item->setForeground(1, Palette::tone(tone));
    }
    ListTable::fitHeight(table);
    page->addWidget(table);
}

}  // namespace

MonitoringView::MonitoringView(MonitoringModel& model, QWidget* parent) : QScrollArea(parent), model_(model) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    connect(&model_, &MonitoringModel::changed, this, &MonitoringView::rebuild);
    connect(&model_, &MonitoringModel::agentLineChanged, this, &MonitoringView::rebuild);
    rebuild();
}

void MonitoringView::rebuild() {
    auto* content = new QWidget;
    auto* page = ToolParts::page(content, QStringLiteral("Monitoring"));
    const auto& values = model_.values();

    auto* agent = new QHBoxLayout;
    auto* agentLine = ScreenParts::wrapped(model_.isLoaded() ? agentText(values) : QStringLiteral("Reading…"));
    agent->addWidget(agentLine, 1);
    const bool on = model_.agentRegistered();
    agentButton_ = new QPushButton(on ? QStringLiteral("Turn agent off") : QStringLiteral("Turn agent on"));
    agentButton_->setToolTip(on ? QStringLiteral("Stop starting the agent at login")
                                : QStringLiteral("Start the agent at login; it needs your consent to run in the "
                                                 "background"));
    agentButton_->setEnabled(model_.isLoaded() && !model_.isChanging());
    connect(agentButton_, &QPushButton::clicked, &model_, [this, on] { model_.setAgentEnabled(!on); });
    agent->addWidget(agentButton_, 0, Qt::AlignTop);
    page->addLayout(agent);
    if (!model_.agentLine().empty()) page->addWidget(note(text(model_.agentLine())));
    for (const auto& problem : values.problems) page->addWidget(note(text(problem)));

    page->addWidget(ScreenParts::heading(QStringLiteral("Free space")));
    if (model_.isLoaded() && values.volumes.empty())
        page->addWidget(
            note(QStringLiteral("No history yet: the agent records every volume's free space at each cycle.")));
    for (const auto& volume : values.volumes) addVolume(page, volume);

    addEvents(page, QStringLiteral("Alerts"), model_.alerts(), QStringLiteral("No alerts."));
    addEvents(page, QStringLiteral("Volumes mounted and unmounted"), model_.mountEvents(),
              QStringLiteral("No monitor events yet."));
    page->addStretch(1);
    setWidget(content);
}

}  // namespace corvel::desktop
