// What `uninstall` would remove, item by item with sizes, and what it then did. The plan holds
// nothing but what Velmora itself keeps (see VelmoraLocations); removal never reaches beyond it.
//
//   UninstallPlan plan = UninstallPlanner::plan(locations);
//   for (const auto& item : plan.items) show(label(item.kind), item.bytes, item.path);
//   UninstallResult result = UninstallPlanner::execute(plan);
//   for (const auto& left : result.left) show(left.path, left.reason);
#pragma once

#include "common/Json.h"
#include "uninstall/VelmoraLocations.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvel {

struct UninstallItem {
    std::string path;
    KeptKind kind = KeptKind::dataFile;
    bool isDirectory = false;
    std::int64_t bytes = 0;              // file lengths, everything below a folder included
    std::int64_t fileCount = 0;          // files (and links) below a folder; 1 for a file
    std::int64_t unreadableFolders = 0;  // folders inside that could not be listed

    bool operator==(const UninstallItem&) const = default;
};
CORVEL_JSON_RECORD(UninstallItem, path, kind, isDirectory, bytes, fileCount, unreadableFolders)

struct UninstallPlan {
    std::vector<UninstallItem> items;
    // Velmora's own folders that are removed at the end when nothing else is left in them.
    std::vector<std::string> foldersRemovedWhenEmpty;
    // Files in a data folder someone named (--data-dir) that Velmora did not make: never touched.
    std::vector<std::string> foreignFiles;
    // What could not even be looked at (a named data folder that cannot be listed).
    std::vector<std::string> problems;
    std::int64_t totalBytes = 0;

    bool operator==(const UninstallPlan&) const = default;
};
CORVEL_JSON_RECORD(UninstallPlan, items, foldersRemovedWhenEmpty, foreignFiles, problems, totalBytes)

struct UninstallLeftover {
    std::string path;
    std::string reason;

    bool operator==(const UninstallLeftover&) const = default;
};
CORVEL_JSON_RECORD(UninstallLeftover, path, reason)

struct UninstallResult {
    std::vector<std::string> removed;     // the plan's items that are gone entirely
    std::vector<UninstallLeftover> left;  // what could not be removed, and why
    std::int64_t removedBytes = 0;

    bool operator==(const UninstallResult&) const = default;
};
CORVEL_JSON_RECORD(UninstallResult, removed, left, removedBytes)

}  // namespace corvel
