// The space commands: what the catalogue says about a path, and (from their own helpers) the
// footprint, developer locations and scans.
#include "CliErrors.h"
#include "Commands.h"
#include "ScreenCommands.h"
#include "common/PathText.h"

#include <filesystem>
#include <memory>

namespace corvel::cli {
namespace {

struct ClassifyOptions {
    std::vector<std::string> paths;
    std::vector<std::string> projectRoots;
    bool asDirectory = false;
    bool asFile = false;
};

std::string styledRisk(const Style& style, CleanupRisk risk) {
    const std::string text = std::string(label(risk)) + " (" + std::string(rawValue(risk)) + ")";
    switch (risk) {
        case CleanupRisk::green:
            return style.green(text);
        case CleanupRisk::yellow:
            return style.yellow(text);
        case CleanupRisk::red:
            return style.red(text);
        case CleanupRisk::gray:
            return style.dim(text);
    }
    return text;
}

// Live, a path is a folder when the file system says so (a link to a folder is not one: scans
// never follow links). A recorded machine's files are not here, so its paths count as folders.
bool isDirectoryPath(CliContext& context, const ClassifyOptions& options, const std::string& path) {
    if (options.asDirectory) return true;
    if (options.asFile) return false;
    if (context.machine().isRecorded()) return true;
    std::error_code ec;
    const auto status = std::filesystem::symlink_status(path, ec);
    if (ec || status.type() == std::filesystem::file_type::not_found)
        throw UsageError("'" + path +
                         "': no such file or folder (use --as-directory or --as-file to classify a path "
                         "that does not exist here)");
    return status.type() == std::filesystem::file_type::directory;
}

void runClassify(CliContext& context, const ClassifyOptions& options) {
    if (options.asDirectory && options.asFile) throw UsageError("--as-directory and --as-file exclude each other");
    std::vector<std::string> roots;
    for (const auto& root : options.projectRoots) roots.push_back(normalPath(root));
    const SpaceCatalog catalog = context.machine().catalog(std::move(roots));

    // Every path is looked at before anything is printed, so a typo fails the whole command
    // instead of leaving half an answer.
    struct Entry {
        std::string path;
        bool isDirectory;
    };
    std::vector<Entry> entries;
    for (const auto& typed : options.paths) {
        auto path = normalPath(typed);
        const bool isDirectory = isDirectoryPath(context, options, path);
        entries.push_back({std::move(path), isDirectory});
    }

    if (context.json()) {
        Json document = Json::array();
        for (const auto& entry : entries)
            document.push_back(Json{{"path", entry.path},
                                    {"isDirectory", entry.isDirectory},
                                    {"classification", catalog.classify(entry.path, entry.isDirectory)}});
        context.printJson(document);
        return;
    }
    const auto& style = context.style();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto& entry = entries[i];
        const auto classification = catalog.classify(entry.path, entry.isDirectory);
        if (i) context.out() << '\n';
        const bool markFolder = entry.isDirectory && !entry.path.ends_with('/');
        context.out() << style.bold(entry.path) << (markFolder ? "/" : "") << '\n';
        Table table;
        table.addRow({"category", std::string(rawValue(classification.category))});
        table.addRow({"risk", styledRisk(style, classification.risk)});
        table.addRow({"owner", classification.application.value_or(style.dim("unknown"))});
        table.addRow({"rationale", classification.rationale});
        if (classification.hint) table.addRow({"hint", withCommandHints(*classification.hint)});
        table.print(context.out(), "  ");
    }
}

void addClassifyCommand(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<ClassifyOptions>();
    auto* command = app.add_subcommand("classify",
                                       "Show what the space catalogue says about paths: category, "
                                       "cleanup risk, owner, rationale and the owner's cleanup hint");
    command->add_option("path", options->paths, "Paths to classify (relative ones from the current folder)")
        ->required()
        ->type_name("PATH");
    command->add_option("--project-root", options->projectRoots, "Treat DIR as a project folder (repeatable)")
        ->type_name("DIR");
    command->add_flag("--as-directory", options->asDirectory, "Classify every path as a folder, existing or not");
    command->add_flag("--as-file", options->asFile, "Classify every path as a file, existing or not");
    command->callback([&context, options] { runClassify(context, *options); });
}

}  // namespace

void registerSpaceCommands(CLI::App& app, CliContext& context) {
    addClassifyCommand(app, context);
}

}  // namespace corvel::cli
