// The accounting command: where one volume's used space goes, part by part, with the listing
// each figure comes from and the remainder nothing explains.
#include "CliErrors.h"
#include "Commands.h"
#include "common/ByteFormat.h"
#include "common/Text.h"
#include "machine/MachineAccounting.h"

#include <memory>

namespace corvel::cli {
namespace {

struct AccountingOptions {
    std::string volume;
};

std::string sizeText(const Style& style, const std::optional<std::int64_t>& bytes) {
    return bytes ? ByteFormat::string(*bytes) : style.tone(Tone::caution, "unknown");
}

void printAccount(CliContext& context, const StorageAccount& account) {
    const auto& style = context.style();
    auto& out = context.out();
    std::string heading = style.bold(terminalSafe(account.mountPoint));
    if (!account.containerVolumes.empty())
        heading += "  " + style.dim("APFS container " + terminalSafe(account.device) + ", " +
                                    std::to_string(account.containerVolumes.size()) + " volumes");
    else if (!account.fileSystemType.empty())
        heading += "  " + style.dim(terminalSafe(account.fileSystemType) + " on " + terminalSafe(account.device));
    out << heading << '\n';
    out << "  " << ByteFormat::string(account.usedBytes) << " used of " << ByteFormat::string(account.capacityBytes)
        << ", " << ByteFormat::string(account.availableBytes) << " available\n\n";

    Table table({Table::Align::left, Table::Align::right, Table::Align::left, Table::Align::left});
    for (const auto& row : account.rows) {
        std::string detail = terminalSafe(row.detail);
        if (row.part == AccountingPart::seenByLastScan && account.scannedFolder)
            detail = "scan of " + terminalSafe(*account.scannedFolder) +
                     (account.scannedAt ? ", " + ISO8601::format(*account.scannedAt) : "") +
                     (detail.empty() ? "" : ", " + detail);
        table.addRow({style.tone(toneOf(row.part), std::string(label(row.part))), sizeText(style, row.bytes),
                      style.dim(row.source), detail});
    }
    table.print(out, "  ");

    if (!account.snapshots.empty()) {
        out << '\n' << style.bold("Snapshots") << '\n';
        Table snapshots({Table::Align::left, Table::Align::left, Table::Align::right, Table::Align::left});
        for (const auto& snapshot : account.snapshots)
            snapshots.addRow({terminalSafe(snapshot.name), snapshot.localTime.value_or(""),
                              sizeText(style, snapshot.bytes),
                              style.dim(snapshot.isPurgeable.value_or(false) ? "purgeable" : "")});
        snapshots.print(out, "  ");
        out << style.dim("  Velmora never deletes snapshots; to thin them: " +
                         std::string(thinningCommand(account.snapshots.front().kind)))
            << '\n';
    }
    if (!account.swapFiles.empty()) {
        out << '\n' << style.bold("Swap files") << '\n';
        Table swaps({Table::Align::left, Table::Align::right});
        for (const auto& area : account.swapFiles)
            swaps.addRow({terminalSafe(area.path), ByteFormat::string(area.sizeBytes)});
        swaps.print(out, "  ");
    }
    if (!account.scannedFolder)
        out << '\n' << style.dim("No scan of this volume yet: velmora scan FOLDER measures the folders on it.") << '\n';
    for (const auto& warning : account.warnings) context.err() << "velmora: warning: " << terminalSafe(warning) << '\n';
}

void runAccounting(CliContext& context, const AccountingOptions& options) {
    Machine& machine = context.machine();
    const auto snapshot = machine.snapshot();
    const std::optional<std::string> typed =
        options.volume.empty() ? std::nullopt : std::optional<std::string>(options.volume);
    const auto volume = MachineAccounting::chooseVolume(snapshot, typed);
    if (!volume) {
        if (typed) throw UsageError("unknown volume '" + terminalSafe(*typed) + "' (give its mount point or name)");
        throw CommandFailure("no boot volume found to account for");
    }
    const StorageAccount account = MachineAccounting::read(machine, snapshot, *volume);
    if (context.json()) {
        context.printJson(Json(account));
        return;
    }
    context.printSource();
    printAccount(context, account);
}

}  // namespace

void registerAccountingCommands(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<AccountingOptions>();
    auto* command = app.add_subcommand("accounting",
                                       "Show where a volume's used space goes: reserved blocks, metadata, "
                                       "APFS volumes, snapshots, purgeable space, swap files, the last scan "
                                       "and what nothing explains");
    command
        ->add_option("volume", options->volume,
                     "Mount point, a folder on the volume, or its name (default: boot volume)")
        ->type_name("VOLUME")
        ->expected(1);
    command->callback([&context, options] { runAccounting(context, *options); });
}

}  // namespace corvel::cli
