#include "hardware/HardwareView.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "diagnostics/DeviceTopology.h"
#include "hardware/HardwareModel.h"
#include "widgets/ListTable.h"
#include "widgets/Palette.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QFormLayout>
#include <QLocale>
#include <QVBoxLayout>
#include <cmath>

namespace corvel::desktop {
namespace {

using ScreenParts::note;
using ScreenParts::text;

QString unknown() {
    return QStringLiteral("unknown");
}

QString optionalText(const std::optional<std::string>& value) {
    return value ? text(*value) : QString();
}

QString batteryText(const BatteryHealth& battery) {
    QStringList parts;
    if (battery.cycleCount) parts << QStringLiteral("%1 cycles").arg(*battery.cycleCount);
    if (battery.condition) parts << text(*battery.condition);
    if (battery.capacityFraction) {
        QString capacity = QStringLiteral("%1% of design capacity").arg(std::lround(*battery.capacityFraction * 100));
        if (battery.fullChargeCapacity && battery.designCapacity)
            capacity += QStringLiteral(" (%1 of %2 %3)")
                            .arg(QLocale().toString(static_cast<qlonglong>(*battery.fullChargeCapacity)),
                                 QLocale().toString(static_cast<qlonglong>(*battery.designCapacity)),
                                 optionalText(battery.capacityUnit));
        parts << capacity;
    }
    if (battery.chargePercent)
        parts << QStringLiteral("%1% charged%2")
                     .arg(*battery.chargePercent)
                     .arg(battery.isCharging == true ? QStringLiteral(", charging") : QString());
    return parts.isEmpty() ? QStringLiteral("present") : parts.join(QStringLiteral(" · "));
}

QLabel* fact(const QString& value) {
    auto* label = ScreenParts::wrapped(value);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

void addFacts(QVBoxLayout* page, const HardwareSummary& summary) {
    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignLeft);
    form->setHorizontalSpacing(24);
    QString model = summary.model ? text(*summary.model) : unknown();
    if (summary.modelIdentifier) model += QStringLiteral(" (%1)").arg(text(*summary.modelIdentifier));
    if (summary.vendor) model = text(*summary.vendor) + QLatin1Char(' ') + model;
    form->addRow(QStringLiteral("Model"), fact(model));
    QString chip = summary.chip ? text(*summary.chip) : unknown();
    if (summary.processorCount) chip += QStringLiteral(" · %1 cores").arg(*summary.processorCount);
    form->addRow(QStringLiteral("Chip"), fact(chip));
    form->addRow(QStringLiteral("Memory"),
                 fact(summary.memoryBytes ? text(HardwareSummary::memoryText(*summary.memoryBytes)) : unknown()));
    form->addRow(QStringLiteral("Battery"),
                 fact(summary.battery ? batteryText(*summary.battery) : QStringLiteral("none reported")));
    page->addLayout(form);
}

void addDevices(QVBoxLayout* page, const HardwareSummary& summary) {
    page->addWidget(ScreenParts::heading(QStringLiteral("Displays")));
    if (summary.displays.empty()) {
        page->addWidget(note(QStringLiteral("None reported.")));
    } else {
        auto* table = ListTable::make(
            {QStringLiteral("Name"), QStringLiteral("Resolution"), QStringLiteral("Connection"), QString()}, 0);
        for (const auto& display : summary.displays)
            ListTable::addRow(table,
                              {text(display.name), optionalText(display.resolution), optionalText(display.connection),
                               display.isMain ? QStringLiteral("main") : QString()});
        ListTable::fitHeight(table);
        page->addWidget(table);
    }
    page->addWidget(ScreenParts::heading(QStringLiteral("USB devices")));
    if (summary.usbDevices.empty()) {
        page->addWidget(note(QStringLiteral("None reported.")));
    } else {
        auto* table =
            ListTable::make({QStringLiteral("Name"), QStringLiteral("Vendor"), QStringLiteral("Link")}, 0, {2});
        for (const auto& device : summary.usbDevices)
            ListTable::addRow(table,
                              {text(device.name), optionalText(device.vendor),
                               device.linkBitsPerSecond ? text(linkSpeedText(*device.linkBitsPerSecond)) : QString()});
        ListTable::fitHeight(table);
        page->addWidget(table);
    }
}

void addInternalDisk(QVBoxLayout* page, const HardwareSummary& summary) {
    page->addWidget(ScreenParts::heading(QStringLiteral("Internal disk")));
    const auto& disk = summary.internalDisk;
    if (!disk) {
        page->addWidget(
            note(QStringLiteral("No scan of an internal disk yet (scan a folder on it on the Space screen "
                                "or with velmora scan).")));
        return;
    }
    page->addWidget(ScreenParts::wrapped(QStringLiteral("%1 · scan of %2 at %3%4")
                                             .arg(text(disk->diskName), text(disk->scanRoot),
                                                  QString::fromStdString(ISO8601::format(disk->scannedAt)),
                                                  disk->isPartial ? QStringLiteral(" (partial)") : QString())));
    auto* table = ListTable::make({QStringLiteral("Category"), QStringLiteral("Size")}, 0, {1});
    for (const auto& category : disk->categories) {
        auto* item = ListTable::addRow(
            table, {text(label(category.category)), QString::fromStdString(ByteFormat::string(category.bytes))});
        item->setData(0, Qt::DecorationRole, Palette::category(category.category));
    }
    if (disk->unattributedBytes > 0)
        ListTable::addRow(table, {QStringLiteral("Elsewhere in the scan"),
                                  QString::fromStdString(ByteFormat::string(disk->unattributedBytes))});
    ListTable::fitHeight(table);
    page->addWidget(table);
}

}  // namespace

HardwareView::HardwareView(HardwareModel& model, QWidget* parent) : QScrollArea(parent), model_(model) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    connect(&model_, &HardwareModel::changed, this, &HardwareView::rebuild);
    rebuild();
}

void HardwareView::rebuild() {
    auto* content = new QWidget;
    auto* page = ToolParts::page(content, QStringLiteral("This Mac"));
    if (!model_.isLoaded()) {
        page->addWidget(note(QStringLiteral("Reading the hardware…")));
    } else {
        const auto& summary = model_.summary();
        if (model_.recordingHoldsNoListing()) {
            page->addWidget(
                note(QStringLiteral("This recording holds no hardware listing: the model, chip, "
                                    "memory, battery, displays and USB devices were not recorded.")));
        } else {
            addFacts(page, summary);
            addDevices(page, summary);
        }
        addInternalDisk(page, summary);
        if (!summary.warnings.empty() && !model_.recordingHoldsNoListing()) {
            page->addWidget(ScreenParts::heading(QStringLiteral("Warnings")));
            for (const auto& warning : summary.warnings) page->addWidget(ScreenParts::wrapped(text(warning)));
        }
    }
    page->addStretch(1);
    setWidget(content);
}

}  // namespace corvel::desktop
