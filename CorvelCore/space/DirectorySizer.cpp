#include "space/DirectorySizer.h"

#include "common/CheckedArithmetic.h"
#include "space/PhysicalFootprint.h"

namespace corvel::DirectorySizer {

namespace {

using DirectoryReader::EntryType;

class Survey final : public FolderWalk::Visitor {
public:
    Survey(DirectoryMeasurement& measurement, FileMetadataReading& files) : measurement_(measurement), files_(files) {}

    FolderWalk::FileOutcome file(int folder, const std::string& name, const std::optional<PathStatus>& listed,
                                 std::size_t) override {
        int error = 0;
        const std::optional<PathStatus> status = listed ? listed : files_.statusAt(folder, name, error);
        if (!status) return {false, 0, error};
        if (status->type != EntryType::regular) return {};  // replaced since it was listed
        measurement_.allocatedBytes = checkedAdd(measurement_.allocatedBytes, status->allocatedBytes);
        measurement_.fileCount += 1;
        return {true, status->allocatedBytes, 0};
    }

private:
    DirectoryMeasurement& measurement_;
    FileMetadataReading& files_;
};

}  // namespace

std::optional<DirectoryMeasurement> measure(const std::filesystem::path& location, TimePoint now,
                                            ScanProgress& progress, const std::function<bool()>& isCancelled,
                                            FileMetadataReading& files) {
    // A location that is itself a symbolic link (a cache moved to another disk and linked back)
    // is measured where it points; links further down are never followed.
    const std::string root = PhysicalFootprint::standardizedPath(location);
    int error = 0;
    const std::optional<PathStatus> target = files.statusOfTarget(root, error);
    if (!target) return std::nullopt;  // nothing there, or a link to nothing
    DirectoryMeasurement measurement;
    measurement.measuredAt = now;
    if (target->type != EntryType::directory) {
        measurement.allocatedBytes = target->allocatedBytes;
        measurement.fileCount = 1;
        progress.addFolder(1, target->allocatedBytes, false);
        return measurement;
    }
    Survey survey(measurement, files);
    FolderWalk::Outcome outcome = FolderWalk::run(root, survey, files, progress, isCancelled);
    measurement.wasCancelled = outcome.wasCancelled;
    measurement.failures = std::move(outcome.failures);
    return measurement;
}

std::optional<DirectoryMeasurement> measure(const std::filesystem::path& location, TimePoint now,
                                            ScanProgress& progress, const std::function<bool()>& isCancelled) {
    SystemFileMetadata files;
    return measure(location, now, progress, isCancelled, files);
}

}  // namespace corvel::DirectorySizer
