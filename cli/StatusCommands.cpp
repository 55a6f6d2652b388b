// `velmora status`, `velmora disks`, `velmora volumes`: the storage snapshot of this machine (or of
// a recorded one) for people, and its records for scripts.
#include "CliErrors.h"
#include "Commands.h"
#include "DiagnoseCommands.h"
#include "InsightsOutput.h"
#include "SettingsCommands.h"
#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "common/Text.h"
#include "insights/InsightEngine.h"
#include "machine/MachineAccounting.h"
#include "machine/RefreshCycle.h"
#include "monitoring/CapacityForecast.h"
#include "monitoring/HistoryStore.h"

#include <cmath>
#include <map>
#include <sstream>

namespace corvel::cli {
namespace {

constexpr int barWidth = 20;

std::string smartText(const PhysicalDisk& disk, const Style& style) {
    return style.tone(toneOf(disk.smartStatus), label(disk.smartStatus));
}

std::string mediumText(const PhysicalDisk& disk) {
    if (!disk.isSolidState) return "";
    return *disk.isSolidState ? "SSD" : "HDD";
}

std::string nvmeText(const PhysicalDisk& disk) {
    if (!disk.nvme) return "";
    std::vector<std::string> parts;
    if (disk.nvme->percentageUsed) parts.push_back(std::to_string(*disk.nvme->percentageUsed) + "% worn");
    if (disk.nvme->temperatureCelsius) {
        parts.push_back(std::to_string(static_cast<long long>(std::lround(*disk.nvme->temperatureCelsius))) + " °C");
    }
    if (auto written = disk.nvme->bytesWritten()) parts.push_back(ByteFormat::string(*written) + " written");
    return join(parts, ", ");
}

// Green while there is room, yellow when getting full, red when nearly full.
std::string coloured(double usedFraction, const std::string& text, const Style& style) {
    if (usedFraction >= 0.9) return style.red(text);
    if (usedFraction >= 0.8) return style.yellow(text);
    return style.green(text);
}

std::string usageText(const StorageVolume& volume, const Style& style) {
    if (volume.totalBytes < 1) return style.dim("size unknown");
    const double used = volume.usedFraction();
    return coloured(used, usageBar(used, barWidth), style) + " " + percent(used);
}

std::string flagsText(const StorageVolume& volume) {
    std::vector<std::string> flags;
    if (volume.isBootVolume) flags.emplace_back("boot");
    if (volume.isNetwork) flags.emplace_back("network");
    if (volume.isReadOnly) flags.emplace_back("read-only");
    if (volume.isEncrypted.value_or(false)) flags.emplace_back("encrypted");
    if (volume.isEjectable) flags.emplace_back("ejectable");
    return join(flags, ", ");
}

void printHeading(CliContext& context, const std::string& title) {
    context.out() << context.style().bold(title) << '\n';
}

void printDisks(CliContext& context, const StorageSnapshot& snapshot) {
    const auto& style = context.style();
    printHeading(context, "Disks");
    if (snapshot.disks.empty()) {
        context.out() << "  " << style.dim("No physical disks found.") << '\n';
        return;
    }
    Table table({Table::Align::left, Table::Align::left, Table::Align::right});
    table.addRow({style.dim("DISK"), style.dim("NAME"), style.dim("SIZE"), style.dim("CONNECTION"), style.dim("MEDIUM"),
                  style.dim("SMART")});
    for (const auto& disk : snapshot.disks) {
        table.addRow({disk.id, disk.displayName(), ByteFormat::string(disk.sizeBytes), disk.connectionLabel(),
                      mediumText(disk), smartText(disk, style)});
    }
    table.print(context.out(), "  ");
}

void printDiskDetails(CliContext& context, const StorageSnapshot& snapshot) {
    const auto& style = context.style();
    for (const auto& disk : snapshot.disks) {
        const std::string title = disk.displayName() == disk.id ? disk.id : disk.id + "  " + disk.displayName();
        context.out() << '\n' << style.bold(title) << '\n';
        Table facts;
        if (disk.partitionScheme) facts.addRow({"Partition map", *disk.partitionScheme});
        if (disk.blockSize) facts.addRow({"Block size", std::to_string(*disk.blockSize) + " bytes"});
        if (auto health = nvmeText(disk); !health.empty()) facts.addRow({"NVMe health", health});
        const auto volumes = snapshot.volumesOn(disk);
        std::vector<std::string> names;
        for (const auto& volume : volumes) names.push_back(volume.name);
        if (!names.empty()) facts.addRow({"Volumes", join(names, ", ")});
        facts.print(context.out(), "  ");
        if (disk.partitions.empty()) continue;
        Table partitions({Table::Align::left, Table::Align::left, Table::Align::right});
        for (const auto& partition : disk.partitions) {
            partitions.addRow({partition.id, partition.content.empty() ? style.dim("(unknown)") : partition.content,
                               ByteFormat::string(partition.sizeBytes), partition.volumeName.value_or("")});
        }
        partitions.print(context.out(), "    ");
    }
}

// `forecasts` (volume id -> days until full) adds the forecast beside the volumes that have one.
void printVolumes(CliContext& context, const StorageSnapshot& snapshot,
                  const std::map<std::string, double>& forecasts = {}) {
    const auto& style = context.style();
    printHeading(context, "Volumes");
    if (snapshot.volumes.empty()) {
        context.out() << "  " << style.dim("No mounted volumes found.") << '\n';
        return;
    }
    Table table({Table::Align::left, Table::Align::left, Table::Align::left, Table::Align::left, Table::Align::right,
                 Table::Align::right});
    table.addRow({style.dim("NAME"), style.dim("MOUNT POINT"), style.dim("FILE SYSTEM"), style.dim("USED"),
                  style.dim("FREE"), style.dim("SIZE"), style.dim("DISK"), ""});
    for (const auto& volume : snapshot.volumes) {
        const auto forecast = forecasts.find(volume.id);
        table.addRow({volume.name, volume.mountPoint, volume.fileSystemLabel(), usageText(volume, style),
                      ByteFormat::string(volume.availableBytes), ByteFormat::string(volume.totalBytes),
                      volume.physicalDiskID.value_or(style.dim("—")), style.dim(flagsText(volume)),
                      forecast == forecasts.end() ? "" : style.yellow(CapacityForecast::describeBriefly(forecast->second))});
    }
    table.print(context.out(), "  ");

    const auto capacity = snapshot.distinctLocalCapacity();
    if (capacity.total > 0) {
        context.out() << "  "
                      << style.dim("Local storage: " + ByteFormat::string(capacity.available) + " free of " +
                                   ByteFormat::string(capacity.total) + " (shared containers counted once)")
                      << '\n';
    }
}

void printWarnings(CliContext& context, const StorageSnapshot& snapshot, const std::vector<std::string>& more = {}) {
    if (snapshot.warnings.empty() && more.empty()) return;
    const auto& style = context.style();
    context.out() << '\n';
    printHeading(context, "Warnings");
    for (const auto& warning : snapshot.warnings) context.out() << "  " << style.yellow("!") << ' ' << warning << '\n';
    for (const auto& warning : more) context.out() << "  " << style.yellow("!") << ' ' << terminalSafe(warning) << '\n';
}

// One line per volume whose local snapshots hold more than the noticeable share of it.
void printSnapshotShares(CliContext& context, const std::vector<SnapshotShare>& shares) {
    const auto& style = context.style();
    for (const auto& share : shares) {
        if (!share.isNoticeable()) continue;
        context.out() << "  " << style.tone(Tone::notice, "Local snapshots hold " + ByteFormat::string(share.bytes))
                      << " (" << percent(share.fraction()) << ") of " << terminalSafe(share.mountPoint) << ": "
                      << style.dim("velmora accounting " + terminalSafe(share.mountPoint)) << '\n';
    }
}

Json warningsJson(const StorageSnapshot& snapshot) {
    return Json(snapshot.warnings);
}

}  // namespace

void registerStatusCommands(CLI::App& app, CliContext& context) {
    auto* status = app.add_subcommand("status", "Show the disks and mounted volumes of this machine (the default)");
    status->callback([&context] {
        // Status reads the history the agent keeps, for the forecasts; it records nothing itself.
        HistoryStore history(HistoryStore::defaultURL(context.machine().dataFolder()));
        RefreshCycle::Steps steps;
        steps.history = &history;
        const auto refresh = RefreshCycle::run(context.machine(), loadSettings(context), steps);
        const auto& snapshot = refresh.snapshot;
        const auto& diagnosis = refresh.diagnosis;
        const auto shares = MachineAccounting::snapshotShares(context.machine(), snapshot);
        const auto insights = MachineInsights::of(context.machine(), snapshot, diagnosis.report,
                                                  InsightEngine::defaultMinimumBytes, std::nullopt, shares);
        if (context.json()) {
            Json document{{"snapshot", snapshot}};
            addDiagnosisJson(document, diagnosis);
            document["insights"] = insights.insights;
            document["forecasts"] = refresh.forecasts;
            Json noticeable = Json::array();
            for (const auto& share : shares)
                if (share.isNoticeable()) noticeable.push_back(share);
            document["snapshotShares"] = noticeable;
            context.printJson(document);
            return;
        }
        context.printSource();
        printDisks(context, snapshot);
        context.out() << '\n';
        printVolumes(context, snapshot, refresh.forecasts);
        printSnapshotShares(context, shares);
        context.out() << '\n';
        printHealthSummary(context, diagnosis);
        printTopInsights(context, insights);
        printWarnings(context, snapshot, refresh.warnings);
    });

    auto* disks = app.add_subcommand("disks", "Show the physical disks with their partitions and health");
    disks->callback([&context] {
        const StorageSnapshot snapshot = context.machine().snapshot();
        if (context.json()) {
            context.printJson(Json{{"disks", snapshot.disks}, {"warnings", warningsJson(snapshot)}});
            return;
        }
        context.printSource();
        printDisks(context, snapshot);
        printDiskDetails(context, snapshot);
        printWarnings(context, snapshot);
    });

    auto* volumes = app.add_subcommand("volumes", "Show the mounted volumes with their usage");
    volumes->callback([&context] {
        const StorageSnapshot snapshot = context.machine().snapshot();
        if (context.json()) {
            context.printJson(Json{{"volumes", snapshot.volumes}, {"warnings", warningsJson(snapshot)}});
            return;
        }
        context.printSource();
        printVolumes(context, snapshot);
        printWarnings(context, snapshot);
    });
}

}  // namespace corvel::cli
