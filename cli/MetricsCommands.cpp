// `velmora metrics [--textfile-dir DIR]`: this machine's figures in the text format Prometheus
// scrapes, on standard output or as DIR/velmora.prom for the node exporter's textfile collector.
// The same refresh as `velmora status`, nothing more.
#include "CliErrors.h"
#include "Commands.h"
#include "SettingsCommands.h"
#include "agent/AgentRecords.h"
#include "common/AtomicFile.h"
#include "common/Text.h"
#include "machine/MachineMetrics.h"
#include "machine/RefreshCycle.h"
#include "monitoring/HistoryStore.h"
#include "monitoring/MetricsExposition.h"

#include <memory>

namespace corvel::cli {
namespace {

// The agent's own figures come from its status file: `velmora metrics` reports on the agent, it
// is not one.
std::optional<MachineMetrics::AgentFigures> agentFigures(const std::filesystem::path& dataFolder) {
    const auto status = AgentFiles::read<AgentStatus>(AgentFiles(dataFolder).status());
    if (!status.value || !status.value->lastCycleAt) return std::nullopt;
    return MachineMetrics::AgentFigures{*status.value->lastCycleAt, status.value->lastCycleSeconds.value_or(0),
                                        status.value->intervalSeconds};
}

}  // namespace

void registerMetricsCommands(CLI::App& app, CliContext& context) {
    auto folder = std::make_shared<std::string>();
    auto* metrics = app.add_subcommand("metrics", "Print this machine's figures for Prometheus (text format)");
    metrics->add_option("--textfile-dir", *folder, "Write DIR/velmora.prom atomically instead (node exporter)")
        ->type_name("DIR")
        ->expected(1)
        ->allow_extra_args(false);
    metrics->callback([&context, folder] {
        if (context.json()) throw UsageError("metrics prints the Prometheus text format; --json does not apply");
        Machine& machine = context.machine();
        const auto settings = loadSettings(context);
        HistoryStore history(HistoryStore::defaultURL(machine.dataFolder()));
        RefreshCycle::Steps steps;
        steps.history = &history;
        const auto refresh = RefreshCycle::run(machine, settings, steps);
        std::vector<std::string> notes;
        auto input = MachineMetrics::gather(machine, refresh, settings.thresholds, notes);
        input.agent = agentFigures(machine.dataFolder());
        for (const auto& note : notes) context.err() << "velmora: warning: " << terminalSafe(note) << '\n';

        const auto text = MetricsExposition::render(MachineMetrics::families(input));
        if (folder->empty()) {
            context.out() << text;
            return;
        }
        try {
            MetricsExposition::writeTextfile(*folder, text);
        } catch (const FileError& error) {
            throw CommandFailure(std::string("metrics: ") + error.what());
        }
        context.out() << "Wrote "
                      << terminalSafe((std::filesystem::path(*folder) / MetricsExposition::textfileName).string())
                      << '\n';
    });
}

}  // namespace corvel::cli
