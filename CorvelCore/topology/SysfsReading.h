// The few Linux kernel files the topology and hardware readers look at (/sys, /proc), behind one
// small interface so that a recorded tree replays them in tests and recordings. Paths are always
// absolute as on the machine ("/sys/block/sda/device"); the implementation decides where they
// really live.
//
//   std::optional<std::string> speed = sysfs.read("/sys/bus/usb/devices/2-1/speed");
//   std::optional<std::string> device = sysfs.resolve("/sys/block/sda/device");  // links followed
//   for (const auto& name : sysfs.list("/sys/class/power_supply")) ...
//   for (const auto& warning : sysfs.warnings()) report(warning);
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvel {

class SysfsReading {
public:
    virtual ~SysfsReading() = default;

    // A small text file's contents; absent when it does not exist or could not be read (the
    // latter also becomes a warning).
    virtual std::optional<std::string> read(const std::string& path) = 0;
    // The path with every symbolic link on the way followed, absent when some part is missing or
    // the links go round in circles (a warning).
    virtual std::optional<std::string> resolve(const std::string& path) = 0;
    // The names in a folder, sorted; empty when it is missing or unreadable.
    virtual std::vector<std::string> list(const std::string& path) = 0;
    // Problems met so far, one readable line each, naming the path.
    virtual const std::vector<std::string>& warnings() const = 0;
};

}  // namespace corvel
