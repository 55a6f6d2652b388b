#include "uninstall/UninstallPlanner.h"

#include "common/CheckedArithmetic.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace corvel::UninstallPlanner {
namespace {

namespace fs = std::filesystem;

bool isPresent(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

bool isRealDirectory(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(fs::symlink_status(path, error));
}

// Sizes below a folder without following links; a folder we cannot list is counted, not fatal.
void measure(const fs::path& path, UninstallItem& item) {
    std::error_code error;
    const auto status = fs::symlink_status(path, error);
    if (!fs::is_directory(status)) {
        item.fileCount = checkedAdd(item.fileCount, std::int64_t{1});
        if (fs::is_regular_file(status)) {
            const auto size = fs::file_size(path, error);
            if (!error) item.bytes = checkedAdd(item.bytes, static_cast<std::int64_t>(size));
        }
        return;
    }
    fs::directory_iterator entries(path, error);
    if (error) {
        item.unreadableFolders = checkedAdd(item.unreadableFolders, std::int64_t{1});
        return;
    }
    for (; entries != fs::directory_iterator(); entries.increment(error)) measure(entries->path(), item);
    if (error) item.unreadableFolders = checkedAdd(item.unreadableFolders, std::int64_t{1});
}

void add(UninstallPlan& plan, const fs::path& path, KeptKind kind) {
    UninstallItem item{path.string(), kind, isRealDirectory(path)};
    measure(path, item);
    plan.totalBytes = checkedAdd(plan.totalBytes, item.bytes);
    plan.items.push_back(std::move(item));
}

// Depth first; returns whether `path` is gone. Failures are collected, the walk goes on.
bool removeTree(const fs::path& path, const Remover& remover, std::vector<UninstallLeftover>& left) {
    if (isRealDirectory(path)) {
        std::error_code error;
        fs::directory_iterator entries(path, error);
        if (error) {
            left.push_back({path.string(), "could not read the folder: " + error.message()});
            return false;
        }
        std::vector<fs::path> children;
        for (; entries != fs::directory_iterator(); entries.increment(error)) children.push_back(entries->path());
        bool allGone = !error;
        if (error) left.push_back({path.string(), "could not read the whole folder: " + error.message()});
        for (const auto& child : children) allGone = removeTree(child, remover, left) && allGone;
        // A folder that still holds something is reported through what it holds.
        if (!allGone) return false;
    }
    if (const auto error = remover(path)) {
        left.push_back({path.string(), error.message()});
        return false;
    }
    return true;
}

}  // namespace

std::error_code removeOne(const fs::path& path) {
    const int result = isRealDirectory(path) ? ::rmdir(path.c_str()) : ::unlink(path.c_str());
    if (result == 0 || errno == ENOENT) return {};
    return {errno, std::generic_category()};
}

UninstallPlan plan(const VelmoraLocations& locations) {
    UninstallPlan result;
    const auto& data = locations.dataFolder;
    if (isRealDirectory(data)) {
        std::error_code error;
        std::vector<fs::path> entries;
        for (fs::directory_iterator it(data, error); !error && it != fs::directory_iterator(); it.increment(error))
            entries.push_back(it->path());
        if (error && locations.dataFolderIsDefault)
            result.items.push_back({data.string(), KeptKind::dataFile, true, 0, 0, 1});
        else if (error)
            result.problems.push_back("could not read " + data.string() + ": " + error.message());
        std::sort(entries.begin(), entries.end());
        for (const auto& entry : entries) {
            const auto name = entry.filename().string();
            if (locations.dataFolderIsDefault || VelmoraLocations::isDataFileName(name))
                add(result, entry, VelmoraLocations::kindOfDataFile(name));
            else
                result.foreignFiles.push_back(entry.string());
        }
        result.foldersRemovedWhenEmpty.push_back(data.string());
    }
    for (const auto& kept : locations.outsideDataFolder())
        if (isPresent(kept.path)) add(result, kept.path, kept.kind);
    for (const auto& legacy : locations.legacyDataFolders())
        if (isRealDirectory(legacy)) add(result, legacy, KeptKind::legacyData);
    return result;
}

UninstallResult execute(const UninstallPlan& plan, const Remover& remover) {
    UninstallResult result;
    for (const auto& item : plan.items) {
        if (!removeTree(item.path, remover, result.left)) continue;
        result.removed.push_back(item.path);
        result.removedBytes = checkedAdd(result.removedBytes, item.bytes);
    }
    for (const auto& folder : plan.foldersRemovedWhenEmpty) {
        std::error_code error;
        if (!isRealDirectory(folder) || !fs::is_empty(folder, error) || error) continue;
        if (const auto problem = remover(folder)) result.left.push_back({folder, problem.message()});
    }
    return result;
}

}  // namespace corvel::UninstallPlanner
