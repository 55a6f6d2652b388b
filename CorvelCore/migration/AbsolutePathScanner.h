// Finds the files under a workspace that would break if it moved: the kinds of file known to
// store the workspace's absolute path (virtual-environment scripts and pyvenv.cfg, CMakeCache.txt,
// git worktree links, compile_commands.json, IDE project caches) that really hold it, and the
// symbolic links that point into it by absolute path. A README that merely mentions the path is
// not read at all, so what is listed is what a move breaks.
//
//   MigrationProgress progress;
//   AbsolutePathScan scan = AbsolutePathScanner::scan("/home/me/ws", progress, [] { return false; });
//   for (const auto& broken : scan.breakingPaths) show(broken.path, broken.line, broken.fix);
//
// Files are read in bounded chunks (a line longer than the bound is cut, never held whole);
// a file holding a NUL byte is binary, skipped and counted; a file or folder that cannot be read
// is listed with its reason and the walk goes on. FIFOs, sockets and devices are never opened.
// The walk stays on the workspace's own device and never follows links. On the way it notes
// what a move to another file system needs to know: names that differ only in case, and whether
// a git repository lives here.
#pragma once

#include "common/Json.h"
#include "migration/BreakingPath.h"
#include "migration/MigrationProgress.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct AbsolutePathScan {
    std::string source;
    std::vector<BreakingPath> breakingPaths;  // sorted by path
    std::int64_t filesRead = 0;
    std::int64_t binaryFilesSkipped = 0;
    std::vector<std::string> unreadable;     // "PATH: reason"
    std::vector<std::string> caseConflicts;  // paths whose name differs from a sibling's only in case
    bool hasGitRepository = false;
    bool wasCancelled = false;

    bool operator==(const AbsolutePathScan&) const = default;
};
CORVEL_JSON_RECORD(AbsolutePathScan, source, breakingPaths, filesRead, binaryFilesSkipped, unreadable, caseConflicts,
                   hasGitRepository, wasCancelled)

namespace AbsolutePathScanner {

// The longest part of one line that is kept for showing; longer lines are still searched whole.
inline constexpr std::size_t shownLineLimit = 240;
// How much of a file is read at a time.
inline constexpr std::size_t chunkBytes = 64 * 1024;

// `source` must be a normal absolute path (common/PathText.h).
AbsolutePathScan scan(const std::string& source, MigrationProgress& progress, const std::function<bool()>& isCancelled);

// Which kind of breakage a regular file at `relative` (below the workspace, "/"-separated) would
// be, judged by its name alone; absent for files that are not read. `inScriptFolder`: the file
// sits in the bin/ or Scripts/ folder of a virtual environment (one holding pyvenv.cfg).
std::optional<BreakKind> fileKind(std::string_view relative, bool inScriptFolder);

// Whether `line` names `source` as a path: followed by its end, "/" or anything that cannot
// continue a file name, so "/home/me/ws" does not match "/home/me/ws2".
bool namesPath(std::string_view line, std::string_view source);

// What a person does about one kind of breakage after the move.
std::string fixFor(BreakKind kind);

}  // namespace AbsolutePathScanner
}  // namespace corvel
