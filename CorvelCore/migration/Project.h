// The projects found under a person's project roots: a git repository (or one of its worktrees) or
// a folder that a package manifest marks, with what it occupies and how much of that its tools
// would rebuild (dependency folders, build outputs, virtual environments, as the catalogue names
// them). A Workspace is one root that was looked through, with its projects.
//
//   ProjectListing listing = ProjectDiscovery::discover(roots, catalog, progress, isCancelled);
//   for (const auto& workspace : listing.workspaces)
//       for (const auto& project : workspace.projects) show(project.path, project.rebuildableBytes);
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"
#include "space/SpaceCategory.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

enum class ProjectKind {
    git,
    gitWorktree,
    swiftPackage,
    xcode,
    node,
    rust,
    go,
    python,
    ruby,
    maven,
    gradle,
    cmake,
    php,
    dart,
    dotnet,
};

template <>
struct EnumTable<ProjectKind> {
    static constexpr std::array<EnumEntry<ProjectKind>, 15> entries{{
        {ProjectKind::git, "git", "git"},
        {ProjectKind::gitWorktree, "gitWorktree", "git worktree"},
        {ProjectKind::swiftPackage, "swiftPackage", "Swift package"},
        {ProjectKind::xcode, "xcode", "Xcode"},
        {ProjectKind::node, "node", "Node"},
        {ProjectKind::rust, "rust", "Rust"},
        {ProjectKind::go, "go", "Go"},
        {ProjectKind::python, "python", "Python"},
        {ProjectKind::ruby, "ruby", "Ruby"},
        {ProjectKind::maven, "maven", "Maven"},
        {ProjectKind::gradle, "gradle", "Gradle"},
        {ProjectKind::cmake, "cmake", "CMake"},
        {ProjectKind::php, "php", "PHP"},
        {ProjectKind::dart, "dart", "Dart"},
        {ProjectKind::dotnet, "dotnet", ".NET"},
    }};
};
CORVEL_ENUM_JSON(ProjectKind)

// A folder inside a project that its tools recreate.
struct RebuildablePart {
    std::string path;
    SpaceCategory category = SpaceCategory::builds;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;

    bool operator==(const RebuildablePart&) const = default;
};
CORVEL_JSON_RECORD(RebuildablePart, path, category, allocatedBytes, exclusiveBytes)

struct Project {
    std::string path;
    std::string name;
    std::vector<ProjectKind> kinds;  // in table order
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t rebuildableBytes = 0;         // allocated bytes of all its rebuildable parts
    std::vector<RebuildablePart> rebuildable;  // the largest parts, largest first
    std::optional<std::string> repository;     // a worktree's main repository
    std::vector<std::string> worktrees;        // a repository's linked worktrees, as it records them
    std::optional<std::string> insideOf;       // the enclosing project, for one nested in another

    bool operator==(const Project&) const = default;
};
CORVEL_JSON_RECORD(Project, path, name, kinds, allocatedBytes, exclusiveBytes, rebuildableBytes, rebuildable,
                   repository, worktrees, insideOf)

struct Workspace {
    std::string path;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::vector<Project> projects;      // largest allocated first
    std::vector<std::string> problems;  // why it was not looked through, or what could not be read

    bool operator==(const Workspace&) const = default;
};
CORVEL_JSON_RECORD(Workspace, path, allocatedBytes, exclusiveBytes, projects, problems)

struct ProjectListing {
    std::vector<Workspace> workspaces;
    bool wasCancelled = false;

    bool operator==(const ProjectListing&) const = default;
};
CORVEL_JSON_RECORD(ProjectListing, workspaces, wasCancelled)

}  // namespace corvel
