// Data kept by earlier versions (in a data folder called Corvel or MacDevCorvel, see
// VelmoraLocations::legacyDataFolders) is moved into the current data folder once, at the first
// start of any command. A file already in the current folder is kept unless the earlier one is
// newer; what stays behind is listed. The record "legacy-migration.json" in the data folder says
// what happened and keeps it from happening twice.
//
//   if (auto record = LegacyDataMigration::atStart(locations, currentTime()))
//       tell(record->moved.size(), "files moved from", record->sources);
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "uninstall/VelmoraLocations.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct LegacyMigrationRecord {
    TimePoint date{};
    std::vector<std::string> sources;  // the earlier folders that existed
    std::vector<std::string> moved;    // paths as they were in the earlier folder
    std::vector<std::string> kept;     // left where they were: the current folder has a newer one
    std::vector<std::string> failed;   // "path: reason"

    bool operator==(const LegacyMigrationRecord&) const = default;
};
CORVEL_JSON_RECORD(LegacyMigrationRecord, date, sources, moved, kept, failed)

namespace LegacyDataMigration {

inline constexpr const char* recordFileName = "legacy-migration.json";

// Moves the entries of each existing folder of `legacyFolders` into `dataFolder`. Absent when the
// record already exists or no earlier folder does. Throws FileError when the record cannot be
// written (the files already moved stay moved).
std::optional<LegacyMigrationRecord> run(const std::filesystem::path& dataFolder,
                                         const std::vector<std::filesystem::path>& legacyFolders, TimePoint now);

// `run` for this person's default data folder; nothing when a data folder was named (tests and
// --data-dir must never pull a person's real files into another folder).
std::optional<LegacyMigrationRecord> atStart(const VelmoraLocations& locations, TimePoint now);

}  // namespace LegacyDataMigration
}  // namespace corvel
