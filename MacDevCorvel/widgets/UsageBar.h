// A horizontal bar showing how full something is, coloured by how little room is left. The
// caller sets the fraction and a text for tool tips and screen readers.
//
//   auto* bar = new UsageBar(volume.usedFraction(), "81% used", parent);
#pragma once

#include <QWidget>

namespace corvel::desktop {

class UsageBar : public QWidget {
public:
    UsageBar(double usedFraction, const QString& description, QWidget* parent = nullptr);

    double usedFraction() const { return usedFraction_; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double usedFraction_;
};

}  // namespace corvel::desktop
