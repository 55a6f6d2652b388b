// The hardware summary on Linux, from the kernel's own files: the firmware's DMI strings
// (/sys/class/dmi/id), /proc/cpuinfo and /proc/meminfo, batteries under /sys/class/power_supply
// (their uevent), connected displays under /sys/class/drm (status and modes), and the USB devices
// under /sys/bus/usb/devices. Missing files leave fields absent; unreadable ones are warnings of
// the sysfs reader.
//
//   SysfsTree sysfs("/");
//   HardwareSummary summary = LinuxHardwareReader::read(sysfs);
#pragma once

#include "hardware/HardwareSummary.h"
#include "topology/SysfsReading.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace corvel::LinuxHardwareReader {

HardwareSummary read(SysfsReading& sysfs);

// The pure halves.
// "KEY=value" lines of a uevent file.
std::map<std::string, std::string> parseUevent(std::string_view text);
// A power supply's uevent, when it describes a battery.
std::optional<BatteryHealth> batteryFromUevent(const std::map<std::string, std::string>& uevent);
// MemTotal of /proc/meminfo, in bytes.
std::optional<std::int64_t> memoryFromMeminfo(std::string_view text);
// The first "model name" of /proc/cpuinfo and the number of "processor" entries.
std::pair<std::optional<std::string>, std::optional<int>> cpuFromCpuinfo(std::string_view text);
// Firmware strings that only say the maker did not fill them in are no answer.
bool isPlaceholder(std::string_view dmiText);

}  // namespace corvel::LinuxHardwareReader
