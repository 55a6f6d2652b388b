// `velmora update check|download|install`: the newest release through gh, compared with this
// version; a download verified against its published checksum; on macOS the installer step, on
// Linux the command to install the verified package.
#include "CliErrors.h"
#include "Commands.h"
#include "SettingsCommands.h"
#include "common/PathText.h"
#include "common/RepositoryName.h"
#include "common/Text.h"
#include "updates/ReleaseChannel.h"
#include "updates/UpdateCheck.h"
#include "updates/UpdateInstaller.h"

#include <memory>

namespace corvel::cli {
namespace {

struct UpdateOptions {
    std::string repository;  // empty: the setting, then Velmora's own
    std::string folder;      // empty: a fresh temporary folder
    bool yes = false;
};

void addRepositoryOption(CLI::App* command, UpdateOptions& options) {
    command->add_option("--repo", options.repository, "Read releases of OWNER/NAME instead of the default")
        ->type_name("OWNER/NAME");
}

ReleaseChannel channelFor(CliContext& context, const UpdateOptions& options) {
    std::optional<std::string> repository;
    if (!options.repository.empty()) {
        if (!RepositoryName::isValid(options.repository))
            throw UsageError("--repo: '" + options.repository + "' is not a GitHub repository (OWNER/NAME)");
        repository = options.repository;
    } else {
        repository = loadSettings(context).updateRepository;
    }
    auto& machine = context.machine();
    // In replay gh counts as installed where the recording ran it.
    const ReleaseChannel::IsExecutable isExecutable = [&machine](const std::string& path) {
        return machine.isRecorded() ? machine.toolInstalled(path) : ReleaseChannel::isExecutableFile(path);
    };
    auto channel = ReleaseChannel::locate(repository, machine.runner(ToolTimeout::inspection), machine.environment(),
                                          isExecutable);
    if (!channel) throw UpdateError::githubCLIMissing();
    channel->forPlatform(machine.platform()).withDownloadRunner(machine.runner(ToolTimeout::action));
    return std::move(*channel);
}

// Every update failure is one line with its own text, exit 1.
template <class Work>
void reportingUpdateErrors(Work&& work) {
    try {
        work();
    } catch (const UpdateError& error) {
        throw CommandFailure(error.description());
    }
}

void printCheck(CliContext& context, const UpdateCheck& check) {
    const auto& style = context.style();
    auto& out = context.out();
    if (!check.isNewer) {
        out << "You have the newest Velmora (" << check.currentVersion << "); the latest release is "
            << terminalSafe(check.availableVersion) << ".\n";
        return;
    }
    out << style.bold("Velmora " + terminalSafe(check.availableVersion) + " is available (you have " +
                      check.currentVersion + ")")
        << '\n';
    const auto& release = check.release;
    std::string facts = terminalSafe(release.title);
    if (release.publishedAt)
        facts += (facts.empty() ? "" : " · ") + std::string("published ") + ISO8601::format(*release.publishedAt);
    if (release.build) facts += (facts.empty() ? "" : " · ") + std::string("build ") + terminalSafe(*release.build);
    if (!facts.empty()) out << style.dim(facts) << '\n';
    for (const auto& line : check.notesPreview) out << "  " << terminalSafe(line) << '\n';
    if (!release.url.empty()) out << style.dim(terminalSafe(release.url)) << '\n';
    out << "Run 'velmora update install' to install it.\n";
}

std::filesystem::path downloadFolder(const UpdateOptions& options) {
    if (options.folder.empty()) return ReleaseChannel::freshDownloadFolder();
    return normalPath(options.folder);
}

std::filesystem::path download(CliContext& context, const ReleaseChannel& channel, const UpdateCheck& check,
                               const UpdateOptions& options) {
    if (!context.json()) context.err() << "Downloading Velmora " << terminalSafe(check.availableVersion) << " …\n";
    return channel.download(check.release, downloadFolder(options));
}

Json downloadDocument(const ReleaseChannel& channel, const UpdateCheck& check, const std::filesystem::path& package) {
    return Json{
        {"repository", channel.repository()}, {"check", check}, {"package", package.string()}, {"verified", true}};
}

}  // namespace

void registerUpdateCommands(CLI::App& app, CliContext& context) {
    auto* update = app.add_subcommand("update", "Check for, download and install a newer Velmora (through gh)");
    update->require_subcommand(1);
    auto options = std::make_shared<UpdateOptions>();

    auto* check = update->add_subcommand("check", "Compare the newest release with this version");
    addRepositoryOption(check, *options);
    check->callback([&context, options] {
        reportingUpdateErrors([&] {
            const auto channel = channelFor(context, *options);
            const auto result = UpdateCheck::evaluate(channel.latest(), VELMORA_VERSION);
            if (context.json()) {
                context.printJson(Json{{"repository", channel.repository()}, {"check", result}});
                return;
            }
            context.printSource();
            printCheck(context, result);
        });
    });

    auto* fetch = update->add_subcommand("download", "Download the newest release's package and verify its checksum");
    addRepositoryOption(fetch, *options);
    fetch->add_option("--to", options->folder, "Save into DIR (default: a new temporary folder)")->type_name("DIR");
    fetch->callback([&context, options] {
        reportingUpdateErrors([&] {
            const auto channel = channelFor(context, *options);
            const auto result = UpdateCheck::evaluate(channel.latest(), VELMORA_VERSION);
            const auto package = download(context, channel, result, *options);
            if (context.json()) {
                context.printJson(downloadDocument(channel, result, package));
                return;
            }
            context.out() << "Downloaded Velmora " << terminalSafe(result.availableVersion) << ": "
                          << terminalSafe(package.string()) << '\n'
                          << context.style().dim("Its SHA-256 matches the published checksum.") << '\n';
        });
    });

    auto* install = update->add_subcommand(
        "install", "Download, verify and install a newer release (on Linux: print the command to install it)");
    addRepositoryOption(install, *options);
    install->add_option("--to", options->folder, "Download into DIR (default: a new temporary folder)")
        ->type_name("DIR");
    install->add_flag("--yes", options->yes, "Install without asking first (the system still asks an administrator)");
    install->callback([&context, options] {
        reportingUpdateErrors([&] {
            const auto channel = channelFor(context, *options);
            const auto result = UpdateCheck::evaluate(channel.latest(), VELMORA_VERSION);
            if (!result.isNewer) {
                if (context.json())
                    context.printJson(
                        Json{{"repository", channel.repository()}, {"check", result}, {"installed", false}});
                else
                    printCheck(context, result);
                return;
            }
            const auto step = UpdateInstaller::stepFor(channel.platform());
            if (step == UpdateInstaller::Step::runInstaller &&
                !context.confirm("Install Velmora " + terminalSafe(result.availableVersion) + "? [y/N]",
                                 options->yes)) {
                context.out() << "Nothing installed.\n";
                return;
            }
            const auto package = download(context, channel, result, *options);
            if (step == UpdateInstaller::Step::printCommand) {
                const auto command = UpdateInstaller::manualCommand(package);
                if (context.json()) {
                    auto document = downloadDocument(channel, result, package);
                    document["installCommand"] = command;
                    context.printJson(document);
                    return;
                }
                context.out() << "Downloaded and verified " << terminalSafe(package.string()) << '\n'
                              << "To install it, run:\n  " << terminalSafe(command) << '\n';
                return;
            }
            if (!context.json())
                context.err() << "Installing Velmora " << terminalSafe(result.availableVersion) << " …\n";
            UpdateInstaller::install(package, context.machine().runner(ToolTimeout::action));
            if (context.json()) {
                auto document = downloadDocument(channel, result, package);
                document["installed"] = true;
                context.printJson(document);
                return;
            }
            context.out() << "Installed Velmora " << terminalSafe(result.availableVersion)
                          << ". Quit and reopen Velmora to use it.\n";
        });
    });
}

}  // namespace corvel::cli
