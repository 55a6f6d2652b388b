// `velmora insights`: the ranked suggestions for this machine (or a recorded one), each pointing
// at the screen that would act on it. Nothing here acts.
#include "CliErrors.h"
#include "Commands.h"
#include "DiagnoseCommands.h"
#include "InsightsOutput.h"
#include "common/ByteFormat.h"
#include "insights/InsightEngine.h"

namespace corvel::cli {

void registerInsightsCommands(CLI::App& app, CliContext& context) {
    auto* command =
        app.add_subcommand("insights", "Rank what is worth looking at: space, safety, Docker, drive health");
    auto minimumBytes = std::make_shared<std::int64_t>(InsightEngine::defaultMinimumBytes);
    command->add_option("--min-bytes", *minimumBytes,
                        "Space suggestions smaller than this many bytes are not shown (default 1000000000)");
    command->callback([&context, minimumBytes] {
        if (*minimumBytes < 0)
            throw UsageError("--min-bytes: " + std::to_string(*minimumBytes) + " is negative; give a byte count");
        const auto snapshot = context.machine().snapshot();
        const auto result =
            MachineInsights::of(context.machine(), snapshot, diagnose(context, snapshot).report, *minimumBytes);

        if (context.json()) {
            context.printJson(Json{{"insights", result.insights}});
            return;
        }
        const auto& style = context.style();
        context.printSource();
        context.out() << style.bold("Insights") << '\n';
        printInsights(context, result.insights, result.insights.size(), "  ");
        context.out() << '\n'
                      << style.dim(result.scanSummary.value_or("No scan summary yet: run velmora scan to rank space.") +
                                   " Space suggestions start at " + ByteFormat::string(*minimumBytes) + ".")
                      << '\n';
        for (const auto& note : result.notes) context.out() << style.yellow("! ") << note << '\n';
    });
}

}  // namespace corvel::cli
