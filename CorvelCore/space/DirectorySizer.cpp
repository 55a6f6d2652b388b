#include "space/DirectorySizer.h"

#include <string>
#include <vector>

#include "common/CheckedArithmetic.h"
#include "space/PhysicalFootprint.h"

namespace corvel::DirectorySizer {

namespace {

using DirectoryReader::EntryType;

// A location that is itself a symbolic link (a cache moved to another disk and linked back) is
// measured where it points; links further down are never followed.
std::optional<std::string> resolveLocation(const std::filesystem::path& location, FileMetadataReading& files) {
    std::string path = PhysicalFootprint::standardizedPath(location);
    for (int hops = 0; hops < 40; ++hops) {
        const std::optional<PathStatus> status = files.status(path);
        if (!status) return std::nullopt;
        if (status->type != EntryType::symlink) return path;
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error) return std::nullopt;
        path = PhysicalFootprint::standardizedPath(
            target.is_absolute() ? target : std::filesystem::path(path).parent_path() / target);
    }
    return std::nullopt;  // a loop of links: nothing real is there
}

}  // namespace

std::optional<DirectoryMeasurement> measure(const std::filesystem::path& location, TimePoint now,
                                            const std::function<bool()>& isCancelled, FileMetadataReading& files) {
    const std::optional<std::string> root = resolveLocation(location, files);
    if (!root) return std::nullopt;
    const std::optional<PathStatus> rootStatus = files.status(*root);
    if (!rootStatus) return std::nullopt;

    DirectoryMeasurement measurement;
    measurement.measuredAt = now;
    if (rootStatus->type != EntryType::directory) {
        measurement.allocatedBytes = rootStatus->allocatedBytes;
        measurement.fileCount = 1;
        return measurement;
    }

    const auto cancelled = [&] { return isCancelled && isCancelled(); };
    std::vector<std::string> pending{*root};
    while (!pending.empty()) {
        if (cancelled()) {
            measurement.wasCancelled = true;
            return measurement;
        }
        const std::string directory = std::move(pending.back());
        pending.pop_back();
        std::vector<DirectoryReader::Entry> entries;
        try {
            entries = files.readDirectory(directory);
        } catch (const DirectoryReader::Failure&) {
            continue;  // an unreadable subfolder must not stop the survey
        }
        for (const DirectoryReader::Entry& entry : entries) {
            if (entry.type == EntryType::symlink) continue;
            const std::string child = PhysicalFootprint::childPath(directory, entry.name);
            const std::optional<PathStatus> status = files.status(child);
            if (!status) continue;
            if (status->type == EntryType::directory) {
                if (status->device == rootStatus->device) pending.push_back(child);
            } else if (status->type == EntryType::regular) {
                measurement.allocatedBytes = checkedAdd(measurement.allocatedBytes, status->allocatedBytes);
                measurement.fileCount += 1;
                if (measurement.fileCount % cancellationPollInterval == 0 && cancelled()) {
                    measurement.wasCancelled = true;
                    return measurement;
                }
            }
        }
    }
    return measurement;
}

std::optional<DirectoryMeasurement> measure(const std::filesystem::path& location, TimePoint now,
                                            const std::function<bool()>& isCancelled) {
    SystemFileMetadata files;
    return measure(location, now, isCancelled, files);
}

}  // namespace corvel::DirectorySizer
