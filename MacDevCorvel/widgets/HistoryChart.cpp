#include "widgets/HistoryChart.h"

#include "common/ByteFormat.h"
#include "widgets/Palette.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <chrono>

namespace corvel::desktop {
namespace {

constexpr double secondsPerDay = 86400;

double secondsBetween(TimePoint from, TimePoint to) {
    return std::chrono::duration<double>(to - from).count();
}

QString dayText(TimePoint time) {
    return QString::fromStdString(ISO8601::format(std::chrono::floor<std::chrono::seconds>(time))).left(10);
}

}  // namespace

HistoryChart::Geometry HistoryChart::Geometry::of(const VolumeHistory& history, const QRectF& area) {
    Geometry geometry;
    if (history.samples.empty() || area.isEmpty()) return geometry;
    const auto first = history.samples.front().timestamp;
    double top = 0;
    for (const auto& sample : history.samples)
        top = std::max({top, static_cast<double>(sample.totalBytes), static_cast<double>(sample.availableBytes)});
    geometry.topBytes = top > 0 ? top : 1;
    const double lastSeconds = secondsBetween(first, history.latest().timestamp);
    geometry.spanSeconds = lastSeconds;
    std::optional<double> fullAt;
    if (history.daysUntilFull && *history.daysUntilFull >= 0) {
        fullAt = lastSeconds + *history.daysUntilFull * secondsPerDay;
        geometry.spanSeconds = *fullAt;
    }
    // A single sample, or samples all at one moment, sit in the middle of the time axis.
    const double span = geometry.spanSeconds > 0 ? geometry.spanSeconds : 0;
    auto x = [&](double seconds) { return span > 0 ? area.left() + area.width() * seconds / span : area.center().x(); };
    auto y = [&](double bytes) { return area.bottom() - area.height() * bytes / geometry.topBytes; };
    for (const auto& sample : history.samples)
        geometry.samples.emplace_back(x(secondsBetween(first, sample.timestamp)),
                                      y(static_cast<double>(sample.availableBytes)));
    if (fullAt) geometry.forecast = QLineF(geometry.samples.back(), QPointF(x(*fullAt), area.bottom()));
    return geometry;
}

HistoryChart::HistoryChart(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void HistoryChart::setHistory(const VolumeHistory& history) {
    history_ = history;
    setAccessibleName(QString::fromStdString(history.volumeName) + QStringLiteral(" free space history"));
    update();
}

QSize HistoryChart::sizeHint() const {
    return {480, fontMetrics().height() * 9};
}

QSize HistoryChart::minimumSizeHint() const {
    return {240, fontMetrics().height() * 9};
}

void HistoryChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto metrics = fontMetrics();
    const QString topLabel =
        history_.samples.empty() ? QString() : QString::fromStdString(ByteFormat::string(history_.latest().totalBytes));
    // One width for every chart, so that charts stacked on a page line up.
    const int left =
        std::max(metrics.horizontalAdvance(topLabel), metrics.horizontalAdvance(QStringLiteral("000.00 GB"))) + 8;
    const QRectF area(left, metrics.height() / 2.0, width() - left - 8, height() - metrics.height() * 2.0);
    const QColor text = palette().color(QPalette::WindowText);
    painter.setPen(Palette::track());
    painter.drawRect(area);
    if (history_.samples.empty()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(area, Qt::AlignCenter, QStringLiteral("No samples yet"));
        return;
    }
    const auto geometry = Geometry::of(history_, area);
    painter.setPen(text);
    painter.drawText(QRectF(0, area.top() - metrics.height() / 2.0, left - 6, metrics.height()),
                     Qt::AlignRight | Qt::AlignVCenter, topLabel);
    painter.drawText(QRectF(0, area.bottom() - metrics.height() / 2.0, left - 6, metrics.height()),
                     Qt::AlignRight | Qt::AlignVCenter, QStringLiteral("0 B"));
    const QRectF axis(area.left(), area.bottom() + 2, area.width(), metrics.height());
    painter.drawText(axis, Qt::AlignLeft | Qt::AlignTop, dayText(history_.samples.front().timestamp));
    if (geometry.forecast) {
        painter.drawText(axis, Qt::AlignRight | Qt::AlignTop, QStringLiteral("full"));
    } else {
        painter.drawText(axis, Qt::AlignRight | Qt::AlignTop, dayText(history_.latest().timestamp));
    }

    const QColor line = Palette::tone(Tone::notice);
    QPainterPath path(geometry.samples.front());
    for (const auto& point : geometry.samples) path.lineTo(point);
    if (geometry.samples.size() > 1) {
        QPainterPath fill = path;
        fill.lineTo(geometry.samples.back().x(), area.bottom());
        fill.lineTo(geometry.samples.front().x(), area.bottom());
        fill.closeSubpath();
        QColor shade = line;
        shade.setAlpha(40);
        painter.fillPath(fill, shade);
    }
    painter.setPen(QPen(line, 2));
    painter.drawPath(path);
    painter.setBrush(line);
    for (const auto& point :
         geometry.samples.size() <= 40 ? geometry.samples : std::vector<QPointF>{geometry.samples.back()})
        painter.drawEllipse(point, 2.5, 2.5);
    if (geometry.forecast) {
        painter.setPen(QPen(Palette::tone(Tone::caution), 2, Qt::DashLine));
        painter.drawLine(*geometry.forecast);
    }
}

}  // namespace corvel::desktop
