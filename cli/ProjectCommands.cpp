// velmora projects [ROOT…]: the workspaces and projects under a person's project roots, with what
// each occupies and how much of it its tools would rebuild. Reads only: it deletes nothing, not
// even the rebuildable parts it measures.
#include "CliErrors.h"
#include "Commands.h"
#include "LongWork.h"
#include "common/ByteFormat.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "machine/ProjectReading.h"

#include <fmt/format.h>

#include <filesystem>
#include <memory>

namespace corvel::cli {
namespace {

struct ProjectsOptions {
    std::vector<std::string> roots;
    int depth = ProjectDiscoveryOptions{}.maxDepth;
};

std::string kindsText(const Project& project) {
    std::vector<std::string> names;
    for (const auto kind : project.kinds) names.emplace_back(label(kind));
    return join(names, ", ");
}

// A project's path as people read it in its workspace's table.
std::string shownPath(const Workspace& workspace, const std::string& path) {
    if (path == workspace.path) return ".";
    if (isStrictlyWithin(path, workspace.path))
        return path.substr(workspace.path.size() + (workspace.path == "/" ? 0 : 1));
    return path;
}

std::string relation(const Workspace& workspace, const Project& project) {
    std::vector<std::string> parts;
    if (project.repository) parts.push_back("worktree of " + terminalSafe(shownPath(workspace, *project.repository)));
    if (!project.worktrees.empty())
        parts.push_back(
            fmt::format("{} worktree{}", project.worktrees.size(), project.worktrees.size() == 1 ? "" : "s"));
    if (project.insideOf) parts.push_back("in " + terminalSafe(shownPath(workspace, *project.insideOf)));
    return join(parts, "; ");
}

std::string rebuildableText(const Project& project) {
    if (project.rebuildableBytes == 0) return "-";
    auto text = ByteFormat::string(project.rebuildableBytes);
    if (!project.rebuildable.empty()) text += " (" + terminalSafe(lastComponent(project.rebuildable.front().path));
    if (project.rebuildable.size() > 1) text += ", …";
    if (!project.rebuildable.empty()) text += ")";
    return text;
}

void printWorkspace(CliContext& context, const Workspace& workspace) {
    auto& out = context.out();
    const auto& style = context.style();
    std::int64_t rebuildable = 0;
    for (const auto& project : workspace.projects)
        if (!project.insideOf) rebuildable += project.rebuildableBytes;
    out << style.bold(terminalSafe(workspace.path));
    if (workspace.problems.empty() || workspace.allocatedBytes > 0)
        out << fmt::format("  {} allocated, {} exclusive · {} project{}, {} rebuildable",
                           ByteFormat::string(workspace.allocatedBytes), ByteFormat::string(workspace.exclusiveBytes),
                           workspace.projects.size(), workspace.projects.size() == 1 ? "" : "s",
                           ByteFormat::string(rebuildable));
    out << '\n';
    for (const auto& problem : workspace.problems)
        out << "  " << style.yellow("!") << ' ' << terminalSafe(problem) << '\n';
    if (workspace.projects.empty()) {
        if (workspace.problems.empty()) out << "  " << style.dim("no projects found") << '\n';
        return;
    }
    Table table({Table::Align::left, Table::Align::left, Table::Align::right, Table::Align::right, Table::Align::left,
                 Table::Align::left});
    table.addRow({style.dim("PROJECT"), style.dim("KIND"), style.dim("ALLOCATED"), style.dim("EXCLUSIVE"),
                  style.dim("REBUILDABLE"), ""});
    for (const auto& project : workspace.projects)
        table.addRow({terminalSafe(shownPath(workspace, project.path)), kindsText(project),
                      ByteFormat::string(project.allocatedBytes), ByteFormat::string(project.exclusiveBytes),
                      rebuildableText(project), style.dim(relation(workspace, project))});
    table.print(out, "  ");
}

void runProjects(CliContext& context, const ProjectsOptions& options) {
    auto& machine = context.machine();
    std::vector<std::string> roots;
    for (const auto& typed : options.roots) {
        const auto path = normalPath(typed, std::filesystem::current_path().string());
        std::error_code error;
        if (!std::filesystem::is_directory(path, error))
            throw UsageError("ROOT is not an existing folder: " + terminalSafe(typed));
        roots.push_back(path);
    }
    if (roots.empty()) {
        if (machine.isRecorded())
            throw CommandFailure(
                "the recorded machine holds no file tree to look for projects in; name ROOT folders "
                "of this machine");
        roots = defaultProjectRoots(machine);
        if (roots.empty())
            throw CommandFailure(
                "no project roots found (the projectRoots setting and ~/Developer, ~/Projects, "
                "~/src, ~/code, … do not exist); name ROOT folders");
    }
    ProjectDiscoveryOptions discovery;
    discovery.maxDepth = options.depth;
    ScanProgress progress;
    auto outcome = runLongWork(
        context,
        [&](const CancelCheck& isCancelled) {
            return projectListing(machine, roots, discovery, progress, isCancelled);
        },
        [&] {
            const auto now = progress.snapshot();
            return fmt::format("Measuring: {} files, {} · {}", groupedCount(now.files),
                               ByteFormat::string(now.allocatedBytes), now.currentFolder);
        });
    const auto& listing = outcome.result;
    if (context.json()) {
        context.printJson(listing);
    } else {
        context.printSource();
        for (std::size_t i = 0; i < listing.workspaces.size(); ++i) {
            if (i > 0) context.out() << '\n';
            printWorkspace(context, listing.workspaces[i]);
        }
        if (listing.wasCancelled || outcome.interrupted)
            context.out() << context.style().yellow("INTERRUPTED") << ": the listing is partial.\n";
    }
    if (listing.wasCancelled || outcome.interrupted) throw CommandFailure("interrupted: the listing is partial");
}

}  // namespace

void registerProjectCommands(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<ProjectsOptions>();
    auto* projects = app.add_subcommand(
        "projects", "List workspaces and projects with their sizes and rebuildable parts (read-only)");
    projects
        ->add_option("roots", options->roots, "Folders to look through (default: projectRoots, then ~/Developer, …)")
        ->type_name("ROOT");
    projects->add_option("--depth", options->depth, "Folder levels below a root searched for projects")
        ->type_name("N")
        ->check(CLI::Range(0, 32))
        ->expected(1)
        ->allow_extra_args(false);
    projects->callback([&context, options] { runProjects(context, *options); });
}

}  // namespace corvel::cli
