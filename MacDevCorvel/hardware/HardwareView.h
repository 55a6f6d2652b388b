// The "This Mac" screen: model, chip, memory and battery, the displays, the USB devices with
// their link speeds, and how the internal disk's scanned space splits over the categories.
// Reads only its model; what the platform did not report reads "unknown" or "None reported."
#pragma once

#include <QScrollArea>

namespace corvel::desktop {

class HardwareModel;

class HardwareView : public QScrollArea {
    Q_OBJECT
public:
    explicit HardwareView(HardwareModel& model, QWidget* parent = nullptr);

private:
    void rebuild();

    HardwareModel& model_;
};

}  // namespace corvel::desktop
