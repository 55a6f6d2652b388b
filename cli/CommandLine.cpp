#include "CliErrors.h"
#include "Commands.h"
#include "UninstallCommands.h"
#include "command/CommandError.h"
#include "common/AtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

namespace corvel::cli {
namespace {

constexpr const char* programName = "velmora";

// Global options that take a value, so that the word after them is not mistaken for a command.
const std::set<std::string>& optionsWithValues() {
    static const std::set<std::string> names{"--replay", "--now", "--data-dir"};
    return names;
}

// The first word that is neither an option nor an option's value: the command the person asked for.
std::optional<std::string> requestedCommand(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--") return std::nullopt;
        if (optionsWithValues().count(word)) {
            ++i;
            continue;
        }
        if (!word.empty() && word.front() == '-') continue;
        return word;
    }
    return std::nullopt;
}

void addGlobalOptions(CLI::App& app, CliContext& context) {
    auto& options = context.options();
    app.add_flag("--json", options.json, "Print one JSON document on stdout instead of text");
    app.add_option("--replay", options.replay,
                   "Read a recorded machine (a folder with machine.json) instead of this one")
        ->type_name("DIR");
    app.add_option("--now", options.now, "Take this ISO 8601 instant as the current time")->type_name("ISO8601");
    app.add_option("--data-dir", options.dataDir,
                   "Keep data files in DIR (default: VELMORA_DATA_DIR, then the support folder)")
        ->type_name("DIR");
}

void addHelpCommand(CLI::App& app, CliContext& context) {
    auto* help = app.add_subcommand("help", "Show help for velmora or for one command");
    auto topic = std::make_shared<std::string>();
    help->add_option("command", *topic, "The command to explain");
    help->callback([&app, &context, topic] {
        // App::help() would describe the selected subcommand, which is this "help" itself.
        if (topic->empty()) {
            context.out() << app.get_formatter()->make_help(&app, programName, CLI::AppFormatMode::Normal);
            return;
        }
        CLI::App* sub = nullptr;
        try {
            sub = app.get_subcommand(*topic);
        } catch (const CLI::OptionNotFound&) {
        }
        if (!sub || *topic == "help") throw UsageError("unknown command '" + *topic + "' (see 'velmora help')");
        context.out() << sub->help(programName);
    });
}

}  // namespace

int runCommandLine(int argc, const char* const* argv, CliContext& context, const CommandFamilies& families) {
    CLI::App app(
        "Velmora shows where a machine's storage really goes.\n"
        "Run 'velmora help COMMAND' for one command's options.",
        programName);
    app.set_version_flag("--version", std::string(programName) + " " + VELMORA_VERSION);
    app.fallthrough();  // global options may follow the command
    app.require_subcommand(0, 1);
    addGlobalOptions(app, context);
    addHelpCommand(app, context);
    families(app, context);
    // Every option is checked before any command starts work: a bad --now or --replay is bad
    // usage, not a failure found after a long scan.
    app.parse_complete_callback([&context] {
        context.validate();
        migrateLegacyData(context);
    });

    auto& err = context.err();
    // CLI11 would take the default command's name as the value ("--replay status").
    if (argc > 1 && optionsWithValues().count(argv[argc - 1])) {
        err << programName << ": " << argv[argc - 1] << " needs a value (see 'velmora help')\n";
        return 2;
    }
    if (const auto word = requestedCommand(argc, argv)) {
        bool known = false;
        for (const auto* sub : app.get_subcommands([](CLI::App*) { return true; }))
            known = known || sub->get_name() == *word;
        if (!known) {
            err << programName << ": unknown command '" << *word << "' (see 'velmora help')\n";
            return 2;
        }
    }

    std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool asksForInfo = std::any_of(arguments.begin(), arguments.end(), [](const std::string& word) {
        return word == "-h" || word == "--help" || word == "--version";
    });
    if (!requestedCommand(argc, argv) && !asksForInfo) {
        // No command means the overview of the machine, once the status family exists.
        bool hasStatus = false;
        for (const auto* sub : app.get_subcommands([](CLI::App*) { return true; }))
            hasStatus = hasStatus || sub->get_name() == "status";
        if (hasStatus) arguments.emplace_back("status");
    }
    std::reverse(arguments.begin(), arguments.end());  // CLI11 takes the words last-first

    try {
        app.parse(arguments);
        if (app.get_subcommands().empty()) context.out() << app.help();
        // A full disk or a closed pipe must not look like success to a script.
        context.out().flush();
        if (!context.out()) {
            err << programName << ": could not write the output (" << std::strerror(errno ? errno : EIO) << ")\n";
            return 1;
        }
        return 0;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            // --help and --version
            return app.exit(error, context.out(), err);
        }
        err << programName << ": " << error.what() << " (see 'velmora help')\n";
        return 2;
    } catch (const UsageError& error) {
        err << programName << ": " << error.what() << '\n';
        return 2;
    } catch (const CommandFailure& error) {
        err << programName << ": " << error.what() << '\n';
        return 1;
    } catch (const CommandError& error) {
        err << programName << ": " << error.description() << '\n';
        return 1;
    } catch (const std::exception& error) {
        err << programName << ": " << error.what() << '\n';
        return 1;
    }
}

}  // namespace corvel::cli
