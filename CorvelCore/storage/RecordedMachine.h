// A recorded machine (DIR/machine.json) as a whole: its name and platform, the snapshot time,
// the home folder, and the volume list the file system reported. Tool output is replayed by
// RecordedCommandRunner from the same file; subsystems read their own extra keys ("mountinfo",
// "statvfs", …) from `document`.
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "common/Platform.h"
#include "storage/MountedVolumeRecord.h"

#include <filesystem>
#include <string>
#include <vector>

namespace corvel {

struct RecordedMachine {
    std::filesystem::path directory;
    std::string name;
    Platform platform = Platform::macos;
    TimePoint capturedAt{};
    std::string home;
    std::vector<MountedVolumeRecord> volumes;
    Json document;

    // Throws RecordingError naming the file when it is missing or malformed.
    static RecordedMachine load(const std::filesystem::path& directory);
};

}  // namespace corvel
