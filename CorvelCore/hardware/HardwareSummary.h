// What the machine is: model and chip or CPU, memory, battery health, displays, USB devices, and
// (when a space scan summary exists) how the internal disk's scanned space splits over the
// catalogue's categories. Every field the platform did not report stays absent or empty; the
// readers never guess.
//
//   HardwareSummary summary = PlatformHardware::read(runner);
//   if (summary.battery && summary.battery->cycleCount) show(*summary.battery->cycleCount);
//   HardwareSummary::memoryText(17179869184) == "16 GB"
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "hardware/DiskBreakdown.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct BatteryHealth {
    std::optional<int> cycleCount;
    std::optional<std::string> condition;            // as the platform says it: "Good", "Normal", …
    std::optional<double> capacityFraction;          // full-charge capacity against design capacity
    std::optional<std::int64_t> fullChargeCapacity;  // in `capacityUnit`
    std::optional<std::int64_t> designCapacity;
    std::optional<std::string> capacityUnit;  // "mWh" or "mAh"
    std::optional<int> chargePercent;
    std::optional<bool> isCharging;

    bool operator==(const BatteryHealth&) const = default;
};

struct DisplayInfo {
    std::string name;
    std::optional<std::string> resolution;  // "3024 x 1964"
    std::optional<std::string> connection;  // "built-in", "HDMI-A", "DP"
    bool isMain = false;

    bool operator==(const DisplayInfo&) const = default;
};

struct USBDeviceInfo {
    std::string name;
    std::optional<std::string> vendor;
    std::optional<std::int64_t> linkBitsPerSecond;

    bool operator==(const USBDeviceInfo&) const = default;
};

struct HardwareSummary {
    std::optional<std::string> model;            // "MacBook Air", "ThinkPad X1 Carbon Gen 9"
    std::optional<std::string> modelIdentifier;  // "Mac14,2", the firmware's product version
    std::optional<std::string> vendor;
    std::optional<std::string> chip;  // "Apple M2", "AMD Ryzen 7 5800X 8-Core Processor"
    std::optional<int> processorCount;
    std::optional<std::int64_t> memoryBytes;
    std::optional<BatteryHealth> battery;
    std::vector<DisplayInfo> displays;
    std::vector<USBDeviceInfo> usbDevices;
    std::optional<DiskBreakdown> internalDisk;
    std::vector<std::string> warnings;

    // Memory is sold in binary gigabytes: 16 GiB reads "16 GB", 23.5 GiB "23.5 GB".
    static std::string memoryText(std::int64_t bytes);

    bool operator==(const HardwareSummary&) const = default;
};

CORVEL_JSON_RECORD(BatteryHealth, cycleCount, condition, capacityFraction, fullChargeCapacity, designCapacity,
                   capacityUnit, chargePercent, isCharging)
CORVEL_JSON_RECORD(DisplayInfo, name, resolution, connection, isMain)
CORVEL_JSON_RECORD(USBDeviceInfo, name, vendor, linkBitsPerSecond)
CORVEL_JSON_RECORD(HardwareSummary, model, modelIdentifier, vendor, chip, processorCount, memoryBytes, battery,
                   displays, usbDevices, internalDisk, warnings)

}  // namespace corvel
