// The depth-first walk that PhysicalFootprint and DirectorySizer share. Each folder is opened
// from its parent's handle (never by a path string, so a chain deeper than the longest path the
// system accepts is measured like any other tree); the walk never follows symbolic links and
// never enters another mount (another device, or a bind mount of the same one); a folder it
// cannot open or list to the end is counted per reason in WalkFailures and the walk goes on.
// Progress is published to a ScanProgress, as the space scanner does, and `isCancelled` is
// polled before each folder and every `cancellationPollInterval` files. Marking the progress
// finished is the caller's: one progress may follow several walks.
//
//   struct Sizes : FolderWalk::Visitor {
//       FolderWalk::FileOutcome file(int folder, const std::string& name,
//                                    const std::optional<PathStatus>& status, std::size_t tag) override;
//   } sizes;
//   FolderWalk::Outcome outcome = FolderWalk::run("/data", sizes, files, progress, isCancelled);
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "space/FileMetadataReading.h"
#include "space/ScanProgress.h"
#include "space/WalkFailures.h"

namespace corvel::FolderWalk {

inline constexpr std::int64_t cancellationPollInterval = 1'000;

// What a visitor made of one regular file.
struct FileOutcome {
    bool counted = false;             // a file of the totals (a second hard link is not)
    std::int64_t allocatedBytes = 0;  // for progress
    int error = 0;                    // why something about it could not be read, 0 when all was
};

class Visitor {
public:
    virtual ~Visitor() = default;
    // The tag a folder's entries carry (an area, say), given its parent's; the root's parent tag
    // is 0.
    virtual std::size_t enterFolder(const std::string& path, std::size_t parentTag) {
        (void)path;
        return parentTag;
    }
    // A regular file of the open `folder`. `status` is present when the listing did not tell the
    // entry's type and the walk had to ask.
    virtual FileOutcome file(int folder, const std::string& name, const std::optional<PathStatus>& status,
                             std::size_t tag) = 0;
};

struct Outcome {
    // Why the root itself could not be opened or listed; the walk then measured nothing.
    std::optional<std::string> rootError;
    std::int64_t deniedDirectories = 0;
    WalkFailures failures;
    // Stopped by isCancelled while folders or files were still waiting.
    bool wasCancelled = false;
};

Outcome run(const std::string& root, Visitor& visitor, FileMetadataReading& files, ScanProgress& progress,
            const std::function<bool()>& isCancelled);

}  // namespace corvel::FolderWalk
