// A file under a workspace that names the workspace by its absolute path, so that it stops
// working once the workspace lives somewhere else: the file, the first line (or link target)
// that names it, and what a person does about it after the move.
//
//   BreakingPath{"/home/me/ws/.venv/bin/activate", BreakKind::virtualEnvironment,
//                "VIRTUAL_ENV=\"/home/me/ws/.venv\"", 42, 1, "Recreate the environment …"}
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

enum class BreakKind {
    virtualEnvironment,
    cmakeCache,
    gitWorktreeLink,
    compileCommands,
    projectCache,
    packageLink,
    symbolicLink,
};

template <>
struct EnumTable<BreakKind> {
    static constexpr std::array<EnumEntry<BreakKind>, 7> entries{{
        {BreakKind::virtualEnvironment, "virtualEnvironment", "Virtual environment", Tone::caution},
        {BreakKind::cmakeCache, "cmakeCache", "CMake cache", Tone::notice},
        {BreakKind::gitWorktreeLink, "gitWorktreeLink", "Git worktree link", Tone::caution},
        {BreakKind::compileCommands, "compileCommands", "Compilation database", Tone::notice},
        {BreakKind::projectCache, "projectCache", "IDE project cache", Tone::notice},
        {BreakKind::packageLink, "packageLink", "Package link", Tone::notice},
        {BreakKind::symbolicLink, "symbolicLink", "Symbolic link", Tone::caution},
    }};
};
CORVEL_ENUM_JSON(BreakKind)

struct BreakingPath {
    std::string path;  // the file or link, absolute
    BreakKind kind = BreakKind::symbolicLink;
    std::string line;                        // the first line naming the workspace, or the link target
    std::optional<std::int64_t> lineNumber;  // 1-based; absent for a link
    std::int64_t matchingLines = 0;          // how many lines name it (1 for a link)
    std::string fix;

    bool operator==(const BreakingPath&) const = default;
};
CORVEL_JSON_RECORD(BreakingPath, path, kind, line, lineNumber, matchingLines, fix)

}  // namespace corvel
