// A free-space history drawn with QPainter: the free space of each sample against time, the
// volume's size as the top of the scale, and, when the core forecasts the volume filling, the
// trend continued as a dashed line down to empty. The geometry is a pure function, tested alone.
//
//   chart->setHistory(volumeHistory);   // samples, trend and days until full from the core
#pragma once

#include "monitoring/VolumeHistory.h"

#include <QLineF>
#include <QPointF>
#include <QRectF>
#include <QWidget>
#include <optional>
#include <vector>

namespace corvel::desktop {

class HistoryChart : public QWidget {
    Q_OBJECT
public:
    // Where a history's points fall in a plot area: seconds since the first sample on x, free
    // bytes on y (zero at the bottom, the largest size at the top); the forecast, when there is
    // one, ends at the bottom edge on the day the volume fills, and the time axis stretches to it.
    struct Geometry {
        std::vector<QPointF> samples;
        std::optional<QLineF> forecast;
        double spanSeconds = 0;  // what the x axis covers
        double topBytes = 0;     // what the y axis covers

        static Geometry of(const VolumeHistory& history, const QRectF& area);
    };

    explicit HistoryChart(QWidget* parent = nullptr);

    void setHistory(const VolumeHistory& history);
    const VolumeHistory& history() const { return history_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    VolumeHistory history_;
};

}  // namespace corvel::desktop
