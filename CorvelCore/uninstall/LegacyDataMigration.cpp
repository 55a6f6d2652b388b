#include "uninstall/LegacyDataMigration.h"

#include "common/AtomicFile.h"

#include <algorithm>
#include <cerrno>

namespace corvel::LegacyDataMigration {
namespace {

namespace fs = std::filesystem;

fs::file_status statusOf(const fs::path& path) {
    std::error_code error;
    return fs::symlink_status(path, error);
}

bool isNewer(const fs::path& candidate, const fs::path& existing) {
    std::error_code first;
    std::error_code second;
    const auto candidateTime = fs::last_write_time(candidate, first);
    const auto existingTime = fs::last_write_time(existing, second);
    return !first && !second && candidateTime > existingTime;
}

// rename where we can; across file systems a copy followed by removing the original.
std::error_code move(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::rename(from, to, error);
    if (error.value() != EXDEV) return error;
    error.clear();
    fs::copy(from, to,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks | fs::copy_options::overwrite_existing,
             error);
    if (error) return error;
    fs::remove_all(from, error);
    return error;
}

}  // namespace

std::optional<LegacyMigrationRecord> run(const fs::path& dataFolder, const std::vector<fs::path>& legacyFolders,
                                         TimePoint now) {
    const auto recordPath = dataFolder / recordFileName;
    if (fs::exists(statusOf(recordPath))) return std::nullopt;
    std::vector<fs::path> sources;
    for (const auto& folder : legacyFolders)
        if (fs::is_directory(statusOf(folder)) && folder != dataFolder) sources.push_back(folder);
    if (sources.empty()) return std::nullopt;

    LegacyMigrationRecord record;
    record.date = now;
    std::error_code error;
    fs::create_directories(dataFolder, error);
    if (error) throw FileError("Could not create " + dataFolder.string() + ": " + error.message());
    for (const auto& source : sources) {
        record.sources.push_back(source.string());
        std::vector<fs::path> entries;
        error.clear();
        for (fs::directory_iterator it(source, error); !error && it != fs::directory_iterator(); it.increment(error))
            entries.push_back(it->path());
        if (error) record.failed.push_back(source.string() + ": " + error.message());
        std::sort(entries.begin(), entries.end());
        for (const auto& entry : entries) {
            const auto target = dataFolder / entry.filename();
            const auto targetStatus = statusOf(target);
            const bool replaceable =
                fs::is_regular_file(targetStatus) && fs::is_regular_file(statusOf(entry)) && isNewer(entry, target);
            if (entry.filename() == recordFileName || (fs::exists(targetStatus) && !replaceable)) {
                record.kept.push_back(entry.string());
                continue;
            }
            if (const auto problem = move(entry, target))
                record.failed.push_back(entry.string() + ": " + problem.message());
            else
                record.moved.push_back(entry.string());
        }
        // Only an emptied folder goes; anything kept stays where the person can find it.
        error.clear();
        if (fs::is_empty(source, error) && !error) fs::remove(source, error);
    }
    AtomicFile::write(recordPath, Json(record).dump(2) + "\n");
    return record;
}

std::optional<LegacyMigrationRecord> atStart(const VelmoraLocations& locations, TimePoint now) {
    if (!locations.dataFolderIsDefault) return std::nullopt;
    return run(locations.dataFolder, locations.legacyDataFolders(), now);
}

}  // namespace corvel::LegacyDataMigration
