#include "widgets/UsageBar.h"

#include "widgets/Palette.h"

#include <QPainter>
#include <algorithm>

namespace corvel::desktop {

UsageBar::UsageBar(double usedFraction, const QString& description, QWidget* parent)
    : QWidget(parent), usedFraction_(std::clamp(usedFraction, 0.0, 1.0)) {
    setToolTip(description);
    setAccessibleName(description);
    setMinimumWidth(80);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize UsageBar::sizeHint() const {
    return {180, 10};
}

void UsageBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF bounds = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double radius = bounds.height() / 2;
    painter.setBrush(Palette::track());
    painter.drawRoundedRect(bounds, radius, radius);
    if (usedFraction_ <= 0) return;
    QRectF filled = bounds;
    filled.setWidth(std::max(bounds.height(), bounds.width() * usedFraction_));
    painter.setBrush(Palette::usage(usedFraction_));
    painter.drawRoundedRect(filled, radius, radius);
}

}  // namespace corvel::desktop
