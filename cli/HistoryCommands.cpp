// `velmora history [VOLUME]`: the free-space history the agent keeps, per volume, with a sparkline,
// the trend per day and when the volume fills at that trend.
#include "CliErrors.h"
#include "Commands.h"
#include "common/ByteFormat.h"
#include "common/Text.h"
#include "monitoring/CapacityForecast.h"
#include "monitoring/HistoryStore.h"
#include "monitoring/VolumeHistory.h"

#include <cmath>
#include <fmt/format.h>
#include <memory>

namespace corvel::cli {
namespace {

constexpr std::size_t sparklineWidth = 40;
constexpr double minimumSpan = CapacityForecast::standardMinimumSpan;

std::string trendText(const std::optional<double>& bytesPerDay) {
    if (!bytesPerDay) return "not enough samples";
    const auto amount = static_cast<std::int64_t>(std::llround(*bytesPerDay));
    if (amount == 0) return "flat";
    return (amount > 0 ? "+" : "") + ByteFormat::string(amount) + " per day";
}

std::string spanText(const VolumeHistory& volume) {
    const auto& first = volume.samples.front();
    const auto& last = volume.latest();
    return fmt::format("{} {} from {} to {}", volume.samples.size(), volume.samples.size() == 1 ? "sample" : "samples",
                       ISO8601::format(first.timestamp), ISO8601::format(last.timestamp));
}

void printVolume(CliContext& context, const VolumeHistory& volume) {
    const auto& style = context.style();
    context.out() << style.bold(terminalSafe(volume.volumeName)) << "  " << style.dim(terminalSafe(volume.volumeID))
                  << '\n';
    const auto& latest = volume.latest();
    Table facts;
    facts.addRow({"free", Sparkline::text(volume.availableSeries(), sparklineWidth) + "  " +
                              ByteFormat::string(latest.availableBytes) + " of " + ByteFormat::string(latest.totalBytes)});
    facts.addRow({"samples", spanText(volume)});
    facts.addRow({"trend", trendText(volume.trendBytesPerDay)});
    const std::string forecast = volume.forecastText(minimumSpan);
    facts.addRow({"forecast", volume.daysUntilFull ? style.yellow(forecast) : style.dim(forecast)});
    facts.print(context.out(), "  ");
}

Json volumeJson(const VolumeHistory& volume) {
    Json j{{"volumeID", volume.volumeID}, {"volumeName", volume.volumeName}};
    putOptional(j, "trendBytesPerDay", volume.trendBytesPerDay);
    putOptional(j, "daysUntilFull", volume.daysUntilFull);
    j["forecast"] = volume.forecastText(minimumSpan);
    j["samples"] = volume.samples;
    return j;
}

}  // namespace

void registerHistoryCommands(CLI::App& app, CliContext& context) {
    auto volumeName = std::make_shared<std::string>();
    auto* history = app.add_subcommand("history", "The free-space history of each volume, its trend and forecast");
    history->add_option("volume", *volumeName, "Only this volume (its name or id)")->type_name("VOLUME");
    history->callback([&context, volumeName] {
        HistoryStore store(HistoryStore::defaultURL(context.machine().dataFolder()));
        auto volumes = VolumeHistory::group(store.allSamples(), minimumSpan);
        if (auto problem = store.loadProblem()) context.err() << "velmora: warning: " << terminalSafe(*problem) << '\n';
        if (!volumeName->empty()) {
            std::vector<VolumeHistory> chosen;
            std::vector<std::string> known;
            for (auto& volume : volumes) {
                known.push_back(volume.volumeName);
                if (volume.volumeID == *volumeName || volume.volumeName == *volumeName) chosen.push_back(std::move(volume));
            }
            if (chosen.empty())
                throw UsageError("no history for volume '" + terminalSafe(*volumeName) + "'" +
                                 (known.empty() ? std::string(" (none recorded yet)")
                                                : " (volumes with history: " + terminalSafe(join(known, ", ")) + ")"));
            volumes = std::move(chosen);
        }
        if (context.json()) {
            Json list = Json::array();
            for (const auto& volume : volumes) list.push_back(volumeJson(volume));
            context.printJson(Json{{"minimumSpanSeconds", minimumSpan}, {"volumes", list}});
            return;
        }
        if (volumes.empty()) {
            context.out() << context.style().dim(
                                 "No history yet: the agent records every volume's free space at each cycle "
                                 "(velmora agent run).")
                          << '\n';
            return;
        }
        for (std::size_t i = 0; i < volumes.size(); ++i) {
            if (i > 0) context.out() << '\n';
            printVolume(context, volumes[i]);
        }
    });
}

}  // namespace corvel::cli
