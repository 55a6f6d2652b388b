// The compact tree a space scan builds while it walks: one small record per folder, and per
// folder only its largest files (the rest are folded into the folder's totals). Records live in
// per-thread arenas, so the walk allocates in large blocks instead of one heap object per file,
// and a 350,000-entry tree fits in a few megabytes.
//
// The tree is raw material: ScanReporting turns it into SpaceNode trees and the scan report.
// Names are the exact bytes the file system returned; the root's name is its full path.
#pragma once

#include "space/DuplicateGroup.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

// A file kept by name because it is among the largest of its folder (or of the whole scan).
struct ScanFile {
    const char* name = nullptr;
    std::uint16_t nameLength = 0;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t modifiedNanoseconds = 0;

    std::string_view nameView() const { return {name, nameLength}; }
};

struct ScanDirectory {
    enum Flag : std::uint16_t {
        denied = 1,       // could not be listed
        otherDevice = 2,  // a mount point: not entered and not counted
        skipped = 4,      // excluded by a pattern, or a second view of a volume counted elsewhere
        notRead = 8,      // the walk was cancelled before reaching it
        vanished = 16,    // deleted between being listed and being opened
        inTrash = 32,     // lies in a trash folder
        readFailed = 64,  // the listing broke off part way
    };

    ScanDirectory* parent = nullptr;
    ScanDirectory* firstChild = nullptr;
    ScanDirectory* nextSibling = nullptr;
    const char* name = nullptr;
    const ScanFile* keptFiles = nullptr;
    std::uint16_t nameLength = 0;
    std::uint16_t keptFileCount = 0;
    std::uint16_t depth = 0;
    std::uint16_t flags = 0;
    std::uint32_t directEntries = 0;  // everything listed in the folder that was counted

    // The folder's own blocks, and its own blocks plus the non-folder items directly inside it.
    std::int64_t ownAllocatedBytes = 0;
    std::int64_t directLogicalBytes = 0;
    std::int64_t directAllocatedBytes = 0;
    std::int64_t directExclusiveBytes = 0;
    std::int64_t directFileCount = 0;

    // The whole subtree, summed once the walk is over.
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t fileCount = 0;
    std::int64_t directoryCount = 0;       // folders below this one
    std::int64_t modifiedNanoseconds = 0;  // the latest modification in the subtree

    std::string_view nameView() const { return {name, nameLength}; }
    bool has(Flag flag) const { return (flags & flag) != 0; }
    // Whether the folder takes part in totals and trees (mount points and skipped views do not).
    bool isCounted() const { return !has(otherDevice) && !has(skipped) && !has(vanished); }
};

// Storage for records made by one walker thread. Records never move once made.
class ScanArena {
public:
    ScanDirectory* newDirectory();
    // `count` contiguous file records.
    ScanFile* newFiles(std::size_t count);
    const char* copyName(std::string_view name);

private:
    static constexpr std::size_t fileBlockSize = 4096;
    static constexpr std::size_t nameBlockSize = 64 * 1024;

    std::deque<ScanDirectory> directories_;
    std::vector<std::unique_ptr<ScanFile[]>> fileBlocks_;
    std::size_t filesUsed_ = fileBlockSize;
    std::vector<std::unique_ptr<char[]>> nameBlocks_;
    std::size_t namesUsed_ = nameBlockSize;
};

// A file of the scan's largest-files list.
struct FoundFile {
    const ScanDirectory* folder = nullptr;
    std::string name;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t modifiedNanoseconds = 0;
};

struct ScanTree {
    std::string rootPath;
    ScanDirectory* root = nullptr;
    std::vector<std::unique_ptr<ScanArena>> arenas;

    bool wasCancelled = false;
    std::int64_t deniedDirectories = 0;
    std::int64_t unreadableFiles = 0;
    std::int64_t skippedMountPoints = 0;
    std::int64_t hardLinkSavedBytes = 0;  // what a sum over names would have counted again
    std::int64_t cloneSharedBytes = 0;    // allocated bytes shared with clones
    std::vector<FoundFile> largestFiles;  // largest first
    std::vector<DuplicateGroup> duplicates;
    std::int64_t sparseFilesLeftOut = 0;          // of the duplicate search: mostly holes, never read
    std::vector<std::string> credentialsInTrash;  // raw paths
    std::vector<std::string> credentialFiles;     // raw paths, sorted; only with listCredentials

    // Raw path of a folder, or of an item in it.
    std::string path(const ScanDirectory* folder) const;
    std::string path(const ScanDirectory* folder, std::string_view name) const;
};

}  // namespace corvel
