// A coloured dot for a status that has a tone (health status, severity, SMART status). The dot
// carries the colour; the accessible name and tool tip carry the meaning for those who cannot
// tell the colours apart.
//
//   auto* light = new TrafficLight(toneOf(assessment.status), "Normal", parent);
#pragma once

#include "common/EnumTable.h"

#include <QWidget>

namespace corvel::desktop {

class TrafficLight : public QWidget {
public:
    TrafficLight(Tone tone, const QString& meaning, QWidget* parent = nullptr);

    Tone tone() const { return tone_; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Tone tone_;
};

}  // namespace corvel::desktop
