// The two things a benchmark asks the operating system: what volume holds a folder, and a
// temporary file there that bypasses the cache and can never outlive the process. One
// implementation per system (platform/linux, platform/macos).
//
//   BenchmarkVolumeFacts facts = BenchmarkVolume::inspect("/mnt/fast");      // throws BenchmarkError
//   BenchmarkVolume::TemporaryFile file = BenchmarkVolume::openTemporary("/mnt/fast");
//   pwrite(file.fd.get(), ...);   // the file has no name (or lost it at once): closing frees it
#pragma once

#include "benchmark/BenchmarkPreflight.h"
#include "common/UniqueFd.h"
#include "storage/MountInfoEntry.h"

#include <optional>

#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

// A folder that cannot be inspected or a file that cannot be made; the text names the folder.
class BenchmarkError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    std::string description() const { return what(); }
};

namespace BenchmarkVolume {

struct TemporaryFile {
    UniqueFd fd;
    bool isCacheBypassed = false;    // O_DIRECT on Linux, F_NOCACHE on macOS
    bool isNameless = false;         // O_TMPFILE: never had a name, so even kill -9 leaves nothing
    std::vector<std::string> notes;  // what had to fall back, for the person to see
};

BenchmarkVolumeFacts inspect(const std::string& folder);
TemporaryFile openTemporary(const std::string& folder);

// The mount that holds `path` (already resolved): among the mounts of its device ("8:2") the
// one with the longest mount point containing it, the later line winning a tie because it was
// mounted over the earlier; any mount containing it when none of its device does.
std::optional<MountInfoEntry> mountHolding(const std::vector<MountInfoEntry>& mounts, const std::string& path,
                                           const std::string& majorMinor);
}  // namespace BenchmarkVolume
}  // namespace corvel
