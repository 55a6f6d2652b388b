// A recorded machine copied into a temporary folder, whose recording a test changes between two
// looks at it: a volume unmounted, free space falling, time passing.
//
//   MachineCopy mac("mac-studio-external-usb");
//   mac.edit([](Json& recording) { recording["capturedAt"] = "2026-11-02T11:00:00Z"; });
#pragma once

#include "common/AtomicFile.h"
#include "common/Json.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <functional>
#include <string>

namespace corvel::testing {

class MachineCopy {
public:
    explicit MachineCopy(const std::string& fixture) {
        std::filesystem::copy(machineFolder(fixture), folder_.root() / "machine",
                              std::filesystem::copy_options::recursive);
    }

    std::filesystem::path folder() const { return folder_.root() / "machine"; }
    std::filesystem::path data() const { return folder_.root() / "data"; }

    // Rewrites machine.json atomically, so a reader never sees half of it.
    void edit(const std::function<void(Json&)>& change) const {
        Json recording = Json::parse(*AtomicFile::read(folder() / "machine.json"));
        change(recording);
        AtomicFile::write(folder() / "machine.json", recording.dump(2));
    }

    // The recorded volume mounted at `path`, to change its figures.
    static Json& volumeAt(Json& recording, const std::string& path) {
        for (auto& volume : recording["volumes"])
            if (volume["path"] == path) return volume;
        throw std::runtime_error("no recorded volume at " + path);
    }

    static void setAvailable(Json& recording, const std::string& path, std::int64_t bytes) {
        Json& volume = volumeAt(recording, path);
        volume["availableBytes"] = bytes;
        volume["importantAvailableBytes"] = bytes;
    }

    static void unmount(Json& recording, const std::string& path) {
        auto& volumes = recording["volumes"];
        for (auto it = volumes.begin(); it != volumes.end(); ++it)
            if ((*it)["path"] == path) {
                volumes.erase(it);
                return;
            }
    }

private:
    TemporaryFolder folder_;
};

}  // namespace corvel::testing
