#include "migration/ProjectDiscovery.h"

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "space/SpaceScanner.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <utility>

namespace corvel::ProjectDiscovery {
namespace {

namespace fs = std::filesystem;

struct Marker {
    std::string_view name;
    ProjectKind kind;
    bool isSuffix = false;
};

constexpr std::array<Marker, 21> markers{{
    {"Package.swift", ProjectKind::swiftPackage},
    {".xcodeproj", ProjectKind::xcode, true},
    {".xcworkspace", ProjectKind::xcode, true},
    {"package.json", ProjectKind::node},
    {"Cargo.toml", ProjectKind::rust},
    {"go.mod", ProjectKind::go},
    {"pyproject.toml", ProjectKind::python},
    {"requirements.txt", ProjectKind::python},
    {"setup.py", ProjectKind::python},
    {"Pipfile", ProjectKind::python},
    {"Gemfile", ProjectKind::ruby},
    {"pom.xml", ProjectKind::maven},
    {"build.gradle", ProjectKind::gradle},
    {"build.gradle.kts", ProjectKind::gradle},
    {"settings.gradle", ProjectKind::gradle},
    {"settings.gradle.kts", ProjectKind::gradle},
    {"CMakeLists.txt", ProjectKind::cmake},
    {"composer.json", ProjectKind::php},
    {"pubspec.yaml", ProjectKind::dart},
    {".sln", ProjectKind::dotnet, true},
    {".csproj", ProjectKind::dotnet, true},
}};

// Dependency and output folders the catalogue leaves to the projects themselves: inside them lie
// other people's manifests, never the person's own projects.
constexpr std::array<std::string_view, 10> dependencyFolders{"node_modules",     "Pods",  "Carthage", "vendor",
                                                             "target",           "build", "dist",     "site-packages",
                                                             "bower_components", "deps"};

bool hasKind(const std::vector<ProjectKind>& kinds, ProjectKind kind) {
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

void addKind(std::vector<ProjectKind>& kinds, ProjectKind kind) {
    if (!hasKind(kinds, kind)) kinds.push_back(kind);
}

void sortKinds(std::vector<ProjectKind>& kinds) {
    std::sort(kinds.begin(), kinds.end(),
              [](ProjectKind a, ProjectKind b) { return static_cast<int>(a) < static_cast<int>(b); });
}

std::string firstLine(const fs::path& file) {
    std::ifstream in(file);
    std::string line;
    // A link file or gitdir record is one short line; anything long is not one.
    if (in && std::getline(in, line) && line.size() < 4096) return line;
    return {};
}

struct Found {
    Project project;
    const ScanDirectory* folder = nullptr;
};

class Search {
public:
    Search(const ScanTree& tree, const SpaceCatalog& catalog, const ProjectDiscoveryOptions& options,
           const std::function<bool()>& isCancelled)
        : tree_(tree), catalog_(catalog), options_(options), isCancelled_(isCancelled) {}

    // `enclosing` indexes `found_`, which grows while the search goes on.
    void visit(const ScanDirectory* folder, int depth, std::optional<std::size_t> enclosing) {
        if (depth > options_.maxDepth || isCancelled_()) return;
        const auto path = tree_.path(folder);
        if (auto project = projectAt(path, enclosing ? &found_[*enclosing].project : nullptr)) {
            found_.push_back({std::move(*project), folder});
            enclosing = found_.size() - 1;
        }
        for (const ScanDirectory* child = folder->firstChild; child; child = child->nextSibling) {
            if (!child->isCounted() || child->has(ScanDirectory::denied)) continue;
            const auto name = child->nameView();
            if (looksInside(name, catalog_.verdict(joinPath(path, name), true))) visit(child, depth + 1, enclosing);
        }
    }

    std::vector<Found> take() { return std::move(found_); }

private:
    std::optional<Project> projectAt(const std::string& path, const Project* enclosing) const {
        std::vector<std::string> names;
        std::error_code error;
        for (fs::directory_iterator entries(path, fs::directory_options::skip_permission_denied, error), end;
             !error && entries != end; entries.increment(error))
            names.push_back(entries->path().filename().string());

        Project project;
        project.kinds = kindsFromNames(names);
        if (enclosing) project.kinds = nestedKinds(project.kinds, enclosing->kinds);
        if (std::find(names.begin(), names.end(), ".git") != names.end()) {
            const auto git = fs::path(path) / ".git";
            const auto type = fs::symlink_status(git, error).type();
            if (type == fs::file_type::directory) {
                project.kinds.push_back(ProjectKind::git);
                project.worktrees = recordedWorktrees(git);
            } else if (type == fs::file_type::regular) {
                if (auto repository = repositoryOfGitFile(firstLine(git), path)) {
                    project.kinds.push_back(ProjectKind::gitWorktree);
                    project.repository = std::move(repository);
                }
            }
        }
        if (project.kinds.empty()) return std::nullopt;
        sortKinds(project.kinds);
        project.path = path;
        project.name = lastComponent(path);
        if (enclosing) project.insideOf = enclosing->path;
        return project;
    }

    static std::vector<std::string> recordedWorktrees(const fs::path& gitFolder) {
        std::vector<std::string> result;
        std::error_code error;
        for (fs::directory_iterator entries(gitFolder / "worktrees", error), end; !error && entries != end;
             entries.increment(error))
            if (auto worktree = worktreeOfGitdirFile(firstLine(entries->path() / "gitdir")))
                result.push_back(std::move(*worktree));
        std::sort(result.begin(), result.end());
        return result;
    }

    const ScanTree& tree_;
    const SpaceCatalog& catalog_;
    const ProjectDiscoveryOptions& options_;
    const std::function<bool()>& isCancelled_;
    std::vector<Found> found_;
};

void collectRebuildable(const ScanTree& tree, const SpaceCatalog& catalog, const ScanDirectory* folder,
                        const std::string& path, std::vector<RebuildablePart>& parts) {
    for (const ScanDirectory* child = folder->firstChild; child; child = child->nextSibling) {
        if (!child->isCounted()) continue;
        const auto name = child->nameView();
        if (name == ".git") continue;  // history, never rebuilt
        auto childPath = joinPath(path, name);
        const auto verdict = catalog.verdict(childPath, true);
        if (isRebuildable(verdict))
            parts.push_back({std::move(childPath), verdict.category, child->allocatedBytes, child->exclusiveBytes});
        else
            collectRebuildable(tree, catalog, child, childPath, parts);
    }
}

void measure(const ScanTree& tree, const SpaceCatalog& catalog, const ProjectDiscoveryOptions& options, Found& found) {
    auto& project = found.project;
    project.allocatedBytes = found.folder->allocatedBytes;
    project.exclusiveBytes = found.folder->exclusiveBytes;
    std::vector<RebuildablePart> parts;
    collectRebuildable(tree, catalog, found.folder, project.path, parts);
    for (const auto& part : parts) project.rebuildableBytes = checkedAdd(project.rebuildableBytes, part.allocatedBytes);
    std::sort(parts.begin(), parts.end(), [](const RebuildablePart& a, const RebuildablePart& b) {
        return a.allocatedBytes != b.allocatedBytes ? a.allocatedBytes > b.allocatedBytes : a.path < b.path;
    });
    if (parts.size() > options.partsPerProject) parts.resize(options.partsPerProject);
    project.rebuildable = std::move(parts);
}

}  // namespace

const std::vector<std::string>& commonRootNames() {
    static const std::vector<std::string> names{"Developer", "Projects", "projects", "src",   "code",
                                                "Code",      "work",     "git",      "repos", "dev"};
    return names;
}

std::vector<ProjectKind> kindsFromNames(const std::vector<std::string>& names) {
    std::vector<ProjectKind> kinds;
    for (const auto& name : names)
        for (const auto& marker : markers)
            if (marker.isSuffix ? name.size() > marker.name.size() && endsWith(name, marker.name) : name == marker.name)
                addKind(kinds, marker.kind);
    sortKinds(kinds);
    return kinds;
}

std::vector<ProjectKind> nestedKinds(const std::vector<ProjectKind>& kinds, const std::vector<ProjectKind>& enclosing) {
    std::vector<ProjectKind> result;
    for (const auto kind : kinds) {
        const bool buildsFromTop =
            kind == ProjectKind::cmake || kind == ProjectKind::gradle || kind == ProjectKind::maven;
        if (!(buildsFromTop && hasKind(enclosing, kind))) result.push_back(kind);
    }
    return result;
}

bool looksInside(std::string_view name, const SpaceVerdict& verdict) {
    if (name.empty() || name.front() == '.') return false;
    if (endsWith(name, ".xcodeproj") || endsWith(name, ".xcworkspace")) return false;
    if (std::find(dependencyFolders.begin(), dependencyFolders.end(), name) != dependencyFolders.end()) return false;
    return !isRebuildable(verdict);
}

bool isRebuildable(const SpaceVerdict& verdict) {
    const bool recreated = verdict.category == SpaceCategory::nodeModules ||
                           verdict.category == SpaceCategory::virtualEnvs ||
                           verdict.category == SpaceCategory::builds || verdict.category == SpaceCategory::caches;
    return recreated && (verdict.risk == CleanupRisk::green || verdict.risk == CleanupRisk::yellow);
}

std::optional<std::string> repositoryOfGitFile(std::string_view text, const std::string& folder) {
    text = trim(text);
    constexpr std::string_view prefix = "gitdir:";
    if (!startsWith(text, prefix)) return std::nullopt;
    const auto gitdir = normalPath(trim(text.substr(prefix.size())), folder);
    // REPO/.git/worktrees/NAME: the repository is what holds ".git".
    const auto worktrees = lastComponent(normalPath("..", gitdir));
    const auto gitFolder = normalPath("../..", gitdir);
    if (worktrees != "worktrees" || lastComponent(gitFolder) != ".git") return std::nullopt;
    return normalPath("..", gitFolder);
}

std::optional<std::string> worktreeOfGitdirFile(std::string_view text) {
    text = trim(text);
    if (text.empty() || text.front() != '/') return std::nullopt;
    const auto gitFile = normalPath(text);
    if (lastComponent(gitFile) != ".git") return std::nullopt;
    return normalPath("..", gitFile);
}

std::vector<std::string> independentRoots(const std::vector<std::string>& roots) {
    std::vector<std::string> result;
    for (const auto& root : roots) {
        const bool covered =
            std::any_of(result.begin(), result.end(), [&](const std::string& kept) { return isWithin(root, kept); });
        if (covered) continue;
        // A later root that holds earlier ones takes the place of the first of them.
        const auto inside = [&](const std::string& kept) { return isWithin(kept, root); };
        const auto first = std::find_if(result.begin(), result.end(), inside);
        if (first != result.end()) {
            *first = root;
            result.erase(std::remove_if(first + 1, result.end(), inside), result.end());
            continue;
        }
        result.push_back(root);
    }
    return result;
}

std::vector<std::string> defaultRoots(const std::vector<std::string>& settingRoots, const std::string& home,
                                      const std::function<bool(const std::string&)>& isFolder) {
    std::vector<std::string> candidates;
    for (const auto& root : settingRoots)
        if (!root.empty() && root.front() == '/') candidates.push_back(normalPath(root));
    for (const auto& name : commonRootNames()) candidates.push_back(joinPath(home, name));
    std::erase_if(candidates, [&](const std::string& path) { return !isFolder(path); });
    return independentRoots(candidates);
}

Workspace discoverIn(const std::string& root, const SpaceCatalog& catalog, const ProjectDiscoveryOptions& options,
                     ScanProgress& progress, const std::function<bool()>& isCancelled) {
    Workspace workspace;
    workspace.path = root;
    SpaceScanOptions scanOptions;
    scanOptions.threads = options.threads;
    scanOptions.keptFilesPerFolder = 0;
    scanOptions.largestFileCount = 0;
    scanOptions.findDuplicates = false;
    ScanTree tree;
    try {
        tree = SpaceScanner::scan(root, scanOptions, progress, isCancelled);
    } catch (const SpaceScanError& error) {
        workspace.problems.push_back(error.what());
        return workspace;
    }
    workspace.allocatedBytes = tree.root->allocatedBytes;
    workspace.exclusiveBytes = tree.root->exclusiveBytes;
    if (tree.deniedDirectories > 0)
        workspace.problems.push_back(std::to_string(tree.deniedDirectories) +
                                     " folders could not be read; sizes leave them out");

    Search search(tree, catalog, options, isCancelled);
    search.visit(tree.root, 0, std::nullopt);
    auto found = search.take();
    for (auto& each : found) {
        measure(tree, catalog, options, each);
        workspace.projects.push_back(std::move(each.project));
    }
    std::sort(workspace.projects.begin(), workspace.projects.end(), [](const Project& a, const Project& b) {
        return a.allocatedBytes != b.allocatedBytes ? a.allocatedBytes > b.allocatedBytes : a.path < b.path;
    });
    return workspace;
}

ProjectListing discover(const std::vector<std::string>& roots, const SpaceCatalog& catalog,
                        const ProjectDiscoveryOptions& options, ScanProgress& progress,
                        const std::function<bool()>& isCancelled) {
    ProjectListing listing;
    for (const auto& root : independentRoots(roots)) {
        if (isCancelled()) {
            listing.wasCancelled = true;
            break;
        }
        listing.workspaces.push_back(discoverIn(root, catalog, options, progress, isCancelled));
    }
    listing.wasCancelled = listing.wasCancelled || isCancelled();
    return listing;
}

}  // namespace corvel::ProjectDiscovery
