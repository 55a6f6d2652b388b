#include "widgets/TrafficLight.h"

#include "widgets/Palette.h"

#include <QPainter>

namespace corvel::desktop {

TrafficLight::TrafficLight(Tone tone, const QString& meaning, QWidget* parent) : QWidget(parent), tone_(tone) {
    setToolTip(meaning);
    setAccessibleName(meaning);
    setFixedSize(sizeHint());
}

QSize TrafficLight::sizeHint() const {
    return {12, 12};
}

void TrafficLight::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Palette::tone(tone_));
    painter.drawEllipse(QRectF(rect()).adjusted(1, 1, -1, -1));
}

}  // namespace corvel::desktop
