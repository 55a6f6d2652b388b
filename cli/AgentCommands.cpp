// `velmora agent register|unregister|run|status|events` and the start flags `--agent-register` and
// `--agent-unregister`: the background agent, registered with the person's own service manager,
// run in the foreground, and asked how it is doing.
#include "CliErrors.h"
#include "Commands.h"
#include "ConsentCommands.h"
#include "agent/Agent.h"
#include "agent/AgentRegistration.h"
#include "agent/AgentSetup.h"
#include "agent/InstanceLock.h"
#include "command/CommandError.h"
#include "common/AtomicFile.h"
#include "common/Text.h"

#include <fmt/format.h>
#include <memory>

namespace corvel::cli {
namespace {

MachineOptions machineOptions(CliContext& context) {
    MachineOptions options;
    const auto& global = context.options();
    if (!global.replay.empty()) options.replay = global.replay;
    if (!global.now.empty()) options.now = global.now;
    if (!global.dataDir.empty()) options.dataFolder = global.dataDir;
    options.environment = context.environment();
    return options;
}

AgentRegistration::Outcome changeRegistration(CliContext& context, bool registering) {
    // Stopping the agent never needs permission; starting it at login does.
    if (registering) requireConsent(context, ConsentScope::backgroundAgent);
    return AgentSetup::change(context.machine(), AgentSetup::runningProgram(), registering);
}

Json registrationJson(const AgentRegistration::Registration& registration) {
    Json j{{"registered", registration.mechanism.has_value()}};
    if (registration.mechanism) j["mechanism"] = *registration.mechanism;
    j["files"] = registration.files;
    return j;
}

void addStartFlags(CLI::App& app, CliContext& context) {
    for (const bool registering : {true, false}) {
        const std::string name = registering ? "--agent-register" : "--agent-unregister";
        app.add_flag_callback(
               name,
               [&context, registering] {
                   // The start flags answer with one line and status 0, whatever the service says.
                   try {
                       context.out() << terminalSafe(changeRegistration(context, registering).line) << '\n';
                   } catch (const UsageError&) {
                       throw;
                   } catch (const std::exception& error) {
                       context.err() << "agent: could not " << (registering ? "register" : "unregister") << ": "
                                     << terminalSafe(error.what()) << '\n';
                   }
                   context.out().flush();
                   throw CLI::Success();
               },
               registering ? "Register the background agent, print one line and exit"
                           : "Unregister the background agent, print one line and exit")
            ->group("Background agent");
    }
}

void registerRegistrationCommands(CLI::App& agent, CliContext& context) {
    for (const bool registering : {true, false}) {
        auto* command = agent.add_subcommand(registering ? "register" : "unregister",
                                             registering ? "Start the agent at login (no root needed; idempotent)"
                                                         : "Stop starting the agent at login and remove its files");
        command->callback([&context, registering] {
            AgentRegistration::Outcome outcome;
            try {
                outcome = changeRegistration(context, registering);
            } catch (const AgentRegistrationError& error) {
                throw CommandFailure(std::string("agent: ") + error.what());
            } catch (const FileError& error) {
                throw CommandFailure(std::string("agent: ") + error.what());
            }
            if (context.json()) {
                Json document = registrationJson(outcome.registration);
                document["changed"] = outcome.changed;
                context.printJson(document);
                return;
            }
            context.out() << terminalSafe(outcome.line) << '\n';
        });
    }
}

struct RunOptions {
    bool once = false;
    int intervalMinutes = 0;
    int intervalSeconds = -1;
    std::string textfileDir;
};

void registerRunCommand(CLI::App& agent, CliContext& context) {
    auto options = std::make_shared<RunOptions>();
    auto* run = agent.add_subcommand("run", "Run the agent in the foreground until stopped (SIGTERM, Ctrl-C)");
    run->add_flag("--once", options->once, "Run one cycle and exit");
    auto* minutes = run->add_option("--interval", options->intervalMinutes,
                                    "Minutes between cycles (default: the setting agentIntervalMinutes)")
                        ->type_name("MINUTES")
                        ->check(CLI::Range(1, 1440));
    // For tests, which cannot wait minutes between cycles.
    run->add_option("--interval-seconds", options->intervalSeconds)
        ->group("")
        ->check(CLI::Range(0, 86400))
        ->excludes(minutes);
    run->add_option("--textfile-dir", options->textfileDir,
                    "Write DIR/velmora.prom for the node exporter every cycle (default: the setting "
                    "metricsTextfileDirectory)")
        ->type_name("DIR")
        ->expected(1)
        ->allow_extra_args(false);
    run->callback([&context, options] {
        context.machine();  // bad --replay or --now is bad usage before anything starts
        AgentOptions agentOptions;
        agentOptions.machine = machineOptions(context);
        agentOptions.once = options->once;
        if (options->intervalMinutes > 0)
            agentOptions.overrides.interval = std::chrono::minutes(options->intervalMinutes);
        if (options->intervalSeconds >= 0)
            agentOptions.overrides.interval = std::chrono::seconds(options->intervalSeconds);
        if (!options->textfileDir.empty())
            agentOptions.overrides.textfileDirectory = std::filesystem::absolute(options->textfileDir);
        auto& err = context.err();
        Agent agentEngine(agentOptions, [&err](const std::string& line) {
            err << "velmora agent: " << terminalSafe(line) << '\n' << std::flush;
        });
        StopSignal stop;
        try {
            agentEngine.run(stop);
        } catch (const AgentAlreadyRunning& error) {
            throw CommandFailure(std::string("agent: ") + error.what());
        } catch (const FileError& error) {
            throw CommandFailure(std::string("agent: ") + error.what());
        }
    });
}

std::string counted(std::int64_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string eventSubject(const MonitorEvent& event) {
    return terminalSafe(event.subjectName.empty() ? event.subjectID : event.subjectName);
}

void printEvents(CliContext& context, const std::vector<MonitorEvent>& events, const std::string& indent) {
    const auto& style = context.style();
    Table table;
    table.addRow({style.dim("TIME"), style.dim("KIND"), style.dim("SUBJECT"), style.dim("WHAT")});
    for (const auto& event : events) {
        const Tone tone = event.severity ? toneOf(*event.severity) : toneOf(event.kind);
        table.addRow({ISO8601::format(event.timestamp), style.tone(tone, std::string(label(event.kind))),
                      eventSubject(event), terminalSafe(event.title + ": " + event.message)});
    }
    table.print(context.out(), indent);
}

std::vector<MonitorEvent> lastEvents(const AgentFiles& files, std::size_t limit, std::optional<std::string>& problem) {
    JSONHistory<MonitorEvent> history(files.events(), AgentFiles::eventLimit);
    auto events = history.all();
    problem = history.loadProblem();
    if (events.size() > limit) events.erase(events.begin(), events.end() - static_cast<std::ptrdiff_t>(limit));
    return events;
}

void printStatus(CliContext& context, const AgentRegistration::Registration& registration,
                 const std::optional<pid_t>& running, const AgentFiles::Read<AgentStatus>& status,
                 const std::vector<MonitorEvent>& events) {
    const auto& style = context.style();
    context.out() << style.bold("Agent") << '\n';
    Table facts;
    std::string registered = style.yellow("no") + style.dim("  (velmora agent register)");
    if (registration.mechanism) {
        std::vector<std::string> files;
        for (const auto& file : registration.files) files.push_back(terminalSafe(file));
        registered = style.green("yes") + ", " + std::string(label(*registration.mechanism)) + " " +
                     style.dim(join(files, ", "));
    }
    facts.addRow({"registered", registered});
    facts.addRow({"running", running ? style.green("yes") + ", pid " + std::to_string(*running) : "no"});
    if (const auto& record = status.value) {
        if (record->lastCycleAt) {
            facts.addRow({"last cycle",
                          fmt::format("{} ({:.2f} s): {}, {}, {}", ISO8601::format(*record->lastCycleAt),
                                      record->lastCycleSeconds.value_or(0), counted(record->volumeCount, "volume"),
                                      counted(record->findingCount, "finding"), counted(record->eventCount, "event"))});
        }
        if (running && record->nextCycleAt) facts.addRow({"next cycle", ISO8601::format(*record->nextCycleAt)});
        facts.addRow({"interval", fmt::format("{} s", record->intervalSeconds)});
        facts.addRow(
            {"monitoring", record->monitoringEnabled ? "on" : style.yellow("off (monitoringEnabled is false)")});
        facts.addRow({"notifications", record->notificationsEnabled ? "on" : "off"});
    } else {
        facts.addRow({"last cycle", style.dim("none yet")});
    }
    facts.print(context.out(), "  ");
    std::vector<std::string> warnings;
    if (status.problem) warnings.push_back(*status.problem + "; the agent's next cycle replaces it");
    if (status.value) warnings.insert(warnings.end(), status.value->warnings.begin(), status.value->warnings.end());
    if (!warnings.empty()) {
        context.out() << '\n' << style.bold("Warnings of the last cycle") << '\n';
        for (const auto& warning : warnings)
            context.out() << "  " << style.yellow("!") << ' ' << terminalSafe(warning) << '\n';
    }
    context.out() << '\n' << style.bold("Last events") << '\n';
    if (events.empty())
        context.out() << "  " << style.dim("No events yet.") << '\n';
    else
        printEvents(context, events, "  ");
}

void registerStatusAndEvents(CLI::App& agent, CliContext& context) {
    auto* status =
        agent.add_subcommand("status", "Whether the agent is registered and running, its cycles and last events");
    status->callback([&context] {
        const AgentFiles files(context.machine().dataFolder());
        const auto registration = AgentRegistration::inspect(AgentSetup::hostFor(context.machine()));
        const auto running = InstanceLock::holder(files.lock());
        const auto record = AgentFiles::read<AgentStatus>(files.status());
        std::optional<std::string> eventsProblem;
        const auto events = lastEvents(files, 5, eventsProblem);
        if (eventsProblem) context.err() << "velmora: warning: " << terminalSafe(*eventsProblem) << '\n';
        if (context.json()) {
            Json document = registrationJson(registration);
            document["running"] = running.has_value();
            if (running) document["pid"] = *running;
            document["status"] = record.value ? Json(*record.value) : Json();
            if (record.problem) document["statusProblem"] = *record.problem;
            document["events"] = events;
            context.printJson(document);
            return;
        }
        printStatus(context, registration, running, record, events);
    });

    auto limit = std::make_shared<int>(20);
    auto* eventsCommand = agent.add_subcommand("events", "The monitor events: volumes mounted and unmounted, alerts");
    eventsCommand->add_option("--limit", *limit, "Show the newest N events (default 20)")
        ->type_name("N")
        ->check(CLI::Range(1, 100000));
    eventsCommand->callback([&context, limit] {
        const AgentFiles files(context.machine().dataFolder());
        std::optional<std::string> problem;
        const auto events = lastEvents(files, static_cast<std::size_t>(*limit), problem);
        if (problem) context.err() << "velmora: warning: " << terminalSafe(*problem) << '\n';
        if (context.json()) {
            context.printJson(Json{{"events", events}});
            return;
        }
        if (events.empty()) {
            context.out() << context.style().dim("No monitor events yet (the agent records them: velmora agent run).")
                          << '\n';
            return;
        }
        printEvents(context, events, "");
    });
}

}  // namespace

void registerAgentCommands(CLI::App& app, CliContext& context) {
    addStartFlags(app, context);
    auto* agent = app.add_subcommand("agent", "The background agent: register, run, status, events");
    agent->require_subcommand(1);
    registerRegistrationCommands(*agent, context);
    registerRunCommand(*agent, context);
    registerStatusAndEvents(*agent, context);
}

}  // namespace corvel::cli
