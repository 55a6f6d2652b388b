// SysfsReading over a folder: "/" on the live machine, or a recorded tree (a folder holding only
// the files that were read, with the symbolic links met on the way kept as links). Links are
// followed inside the folder and never above it; loops and over-long chains stop after a fixed
// number of steps and become warnings, as do files that cannot be read or are not small text.
//
//   SysfsTree live("/");
//   SysfsTree recorded(recordingDir / "sysfs");
//   SysfsTree recording("/", captureDir);   // also copies everything it reads into captureDir
#pragma once

#include "topology/SysfsReading.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

class SysfsTree : public SysfsReading {
public:
    static constexpr int maximumLinks = 40;
    static constexpr std::size_t maximumFileBytes = 1024 * 1024;  // /proc/cpuinfo of a large machine

    explicit SysfsTree(std::filesystem::path root, std::optional<std::filesystem::path> recordInto = std::nullopt)
        : root_(std::move(root)), recordInto_(std::move(recordInto)) {}

    std::optional<std::string> read(const std::string& path) override;
    std::optional<std::string> resolve(const std::string& path) override;
    std::vector<std::string> list(const std::string& path) override;
    const std::vector<std::string>& warnings() const override { return warnings_; }

private:
    std::filesystem::path onDisk(const std::string& path) const;
    void recordLink(const std::string& path, const std::filesystem::path& target);
    void recordFile(const std::string& path, const std::string& contents);
    void warn(std::string warning);

    std::filesystem::path root_;
    std::optional<std::filesystem::path> recordInto_;
    std::vector<std::string> warnings_;
};

}  // namespace corvel
