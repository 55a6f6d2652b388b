// What a walk could not read, counted per reason (the system's error number), with the first
// folders that could not be read kept by path so that a front end can name them, as du does.
// The space scanner, PhysicalFootprint and DirectorySizer all fill one.
//
//   WalkFailures failures;
//   failures.folderFailed(EACCES, "/home/me/private");
//   failures.fileFailed(EIO);
//   failures.folders();          // 1
//   failures.deniedFolders;      // {"/home/me/private"}
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/Json.h"

namespace corvel {

struct FailureCount {
    std::int32_t errorNumber = 0;
    std::string reason;        // the system's text for the error number
    std::int64_t folders = 0;  // folders that could not be opened or listed to the end
    std::int64_t files = 0;    // files whose size facts or extents could not be read

    bool operator==(const FailureCount&) const = default;
};

CORVEL_JSON_RECORD(FailureCount, errorNumber, reason, folders, files)

struct WalkFailures {
    // Paths kept at most: enough to read through, bounded for a tree where nothing is readable.
    static constexpr std::size_t keptFolderPaths = 1000;

    std::vector<FailureCount> byError;       // ascending error number
    std::vector<std::string> deniedFolders;  // the first folders that failed, as raw paths

    void folderFailed(std::int32_t errorNumber, std::string path);
    void fileFailed(std::int32_t errorNumber);
    void merge(const WalkFailures& other);

    std::int64_t folders() const;
    std::int64_t files() const;

    bool operator==(const WalkFailures&) const = default;

private:
    FailureCount& countFor(std::int32_t errorNumber);
};

CORVEL_JSON_RECORD(WalkFailures, byError, deniedFolders)

}  // namespace corvel
