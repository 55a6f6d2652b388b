// `velmora docker`: what the Docker engine keeps on this machine, read-only. The engine's disk
// image is measured even when the engine is stopped; a missing docker program is a fact about
// the machine, not a failure of the command. `velmora docker plan-move` prints how its data would
// move to another volume, for review; it runs none of the commands it shows.
#include "CliErrors.h"
#include "Commands.h"
#include "common/ByteFormat.h"
#include "common/CheckedArithmetic.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "machine/DockerMoveReading.h"
#include "machine/DockerReading.h"

#include <filesystem>
#include <memory>

namespace corvel::cli {
namespace {

std::string bytes(std::int64_t amount) {
    return ByteFormat::string(amount);
}

// Anonymous volumes are named by a 64-digit hash; its start is enough to recognise one.
std::string volumeName(const std::string& name) {
    return name.size() > 24 ? name.substr(0, 12) + "…" : name;
}

std::vector<std::string> shortNames(const std::vector<std::string>& names) {
    std::vector<std::string> result;
    for (const auto& name : names) result.push_back(volumeName(name));
    return result;
}

void heading(CliContext& context, const std::string& title) {
    context.out() << '\n' << context.style().bold(title) << '\n';
}

void printEngine(CliContext& context, const DockerReading& reading, const DockerInventory& inventory) {
    const auto& style = context.style();
    context.out() << style.bold("Docker") << '\n';
    Table facts;
    if (inventory.isReachable()) {
        std::string engine = *inventory.serverVersion;
        if (inventory.operatingSystem) engine += " (" + *inventory.operatingSystem + ")";
        facts.addRow({"Engine", style.green("running") + " · " + engine});
        // Docker Desktop's root lies inside its virtual machine; a native engine's is the measured folder.
        const bool insideVM = inventory.operatingSystem && contains(*inventory.operatingSystem, "Docker Desktop");
        if (inventory.dockerRootDir &&
            (insideVM || !inventory.diskImage || inventory.diskImage->path != *inventory.dockerRootDir))
            facts.addRow(
                {"Data root", *inventory.dockerRootDir + (insideVM ? style.dim(" (inside the virtual machine)") : "")});
    } else {
        facts.addRow({"Engine", style.yellow(DockerReading::engineNotRunningTitle())});
    }
    facts.addRow({"Program", *reading.executable});
    if (const auto& image = inventory.diskImage) {
        // A native engine keeps its data in a folder rather than in one image file.
        const bool folder = contains(image->source, "data root");
        facts.addRow({folder ? "Data folder" : "Disk image", image->path});
        std::string cost = bytes(image->allocatedBytes) + " allocated of " + bytes(image->apparentBytes) + " apparent";
        if (image->volumeMountPoint) cost += ", on " + *image->volumeMountPoint;
        facts.addRow({"", cost + style.dim(" (" + image->source + ")")});
    } else {
        facts.addRow({"Disk image", style.dim("not found")});
    }
    if (inventory.isReachable()) facts.addRow({"Build cache", bytes(inventory.buildCacheBytes)});
    facts.print(context.out(), "  ");
    if (!inventory.isReachable())
        context.out() << "  "
                      << style.dim(
                             DockerReading::engineNotRunningHint(reading.platform, inventory.diskImage.has_value()))
                      << '\n';
}

void printProjects(CliContext& context, const DockerInventory& inventory) {
    const auto usage = inventory.projectUsage();
    if (usage.empty()) return;
    const auto& style = context.style();
    heading(context, "Projects");
    using A = Table::Align;
    Table table({A::left, A::right, A::right, A::right, A::right, A::right, A::left});
    table.addRow({style.dim("PROJECT"), style.dim("CONTAINERS"), style.dim("RUNNING"), style.dim("IMAGES"),
                  style.dim("VOLUMES"), style.dim("SIZE"), style.dim("WORKING DIRECTORY")});
    for (const auto& project : usage) {
        table.addRow({project.name, std::to_string(project.containers), std::to_string(project.runningContainers),
                      std::to_string(project.imageIDs.size()), std::to_string(project.volumes),
                      bytes(project.totalBytes()), project.workingDirectory.value_or("")});
    }
    table.print(context.out(), "  ");
}

void printDatabases(CliContext& context, const DockerInventory& inventory) {
    const auto databases = inventory.databases();
    if (databases.empty()) return;
    const auto& style = context.style();
    heading(context, "Databases");
    Table table({Table::Align::left, Table::Align::left, Table::Align::left, Table::Align::left, Table::Align::right});
    table.addRow({style.dim("CONTAINER"), style.dim("ENGINE"), style.dim("IMAGE"), style.dim("STATE"),
                  style.dim("DATA"), style.dim("VOLUMES")});
    for (const auto& database : databases) {
        table.addRow({database.container.name, database.engine, database.container.image, database.container.state,
                      bytes(database.volumeBytes),
                      database.volumeNames.empty() ? style.dim("no volume: data lives in the container")
                                                   : join(shortNames(database.volumeNames), ", ")});
    }
    table.print(context.out(), "  ");
}

void printBindMounts(CliContext& context, const DockerInventory& inventory) {
    const auto binds = inventory.bindMounts();
    if (binds.empty()) return;
    const auto& style = context.style();
    heading(context, "Bind mounts");
    Table table;
    table.addRow({style.dim("CONTAINER"), style.dim("HOST FOLDER"), style.dim("IN CONTAINER"), style.dim("MODE")});
    for (const auto& bind : binds)
        table.addRow(
            {bind.container.name, bind.mount.source, bind.mount.destination, bind.mount.readWrite ? "rw" : "ro"});
    table.print(context.out(), "  ");
}

void printDiskUsage(CliContext& context, const DockerInventory& inventory) {
    if (inventory.diskUsage.empty()) return;
    const auto& style = context.style();
    heading(context, "Disk usage reported by the engine");
    using A = Table::Align;
    Table table({A::left, A::right, A::right, A::right, A::right});
    table.addRow(
        {style.dim("TYPE"), style.dim("TOTAL"), style.dim("ACTIVE"), style.dim("SIZE"), style.dim("RECLAIMABLE")});
    for (const auto& line : inventory.diskUsage) {
        table.addRow({line.type, std::to_string(line.total), std::to_string(line.active), bytes(line.sizeBytes),
                      bytes(line.reclaimableBytes)});
    }
    table.print(context.out(), "  ");
    if (const auto reclaimable = inventory.reclaimableBytes(); reclaimable && *reclaimable > 0) {
        context.out() << "  "
                      << style.dim("The engine calls " + bytes(*reclaimable) +
                                   " reclaimable. Review it in Docker; Velmora never prunes.")
                      << '\n';
    }
}

void printCounts(CliContext& context, const DockerInventory& inventory) {
    if (!inventory.isReachable()) return;
    std::int64_t imageBytes = 0;
    for (const auto& image : inventory.images) imageBytes = checkedAdd(imageBytes, image.sizeBytes);
    context.out() << "  " << inventory.containers.size() << " containers, " << inventory.images.size() << " images ("
                  << bytes(imageBytes) << "), " << inventory.volumes.size() << " volumes, " << inventory.networks.size()
                  << " networks, " << inventory.composeProjects.size() << " Compose projects\n";
}

void printErrors(CliContext& context, const DockerInventory& inventory) {
    // A stopped engine is already said above; its one error line adds nothing for a person.
    if (!inventory.isReachable() || inventory.errors.empty()) return;
    heading(context, "Could not read");
    for (const auto& error : inventory.errors)
        context.out() << "  " << context.style().yellow("!") << ' ' << error << '\n';
}

void printLines(CliContext& context, const std::string& title, const std::vector<std::string>& lines, bool numbered) {
    if (lines.empty()) return;
    heading(context, title);
    for (std::size_t i = 0; i < lines.size(); ++i)
        context.out() << "  " << (numbered ? std::to_string(i + 1) + ". " : "") << terminalSafe(lines[i]) << '\n';
}

void printMovePlan(CliContext& context, const DockerMoveFacts& facts, const MigrationPlan& plan) {
    auto& out = context.out();
    const auto& style = context.style();
    out << style.bold("Docker move PLAN") << ": for review only; velmora moves, copies and deletes nothing.\n";
    Table table;
    if (facts.dataPath) {
        const auto what = facts.isDataFolder ? "Data root" : "Disk image";
        table.addRow({what, terminalSafe(plan.source) + "  (" + bytes(facts.allocatedBytes) + " allocated of " +
                                bytes(facts.apparentBytes) + " apparent)"});
    } else {
        table.addRow({"Data", style.dim("not found")});
    }
    table.addRow({"Engine", facts.isEngineRunning ? style.yellow("running") : std::string("not running")});
    auto destination = terminalSafe(plan.destination);
    if (plan.targetVolume)
        destination +=
            "  on " + terminalSafe(*plan.targetVolume) + ", " + bytes(plan.targetAvailableBytes.value_or(0)) + " free";
    table.addRow({"Destination", destination});
    table.print(out, "  ");

    heading(context, "Blockers (" + std::to_string(plan.blockers.size()) + ")");
    if (plan.blockers.empty()) out << "  none\n";
    for (const auto& blocker : plan.blockers)
        out << "  " << style.tone(toneOf(blocker.kind), std::string(label(blocker.kind))) << "  "
            << terminalSafe(blocker.message) << '\n';
    printLines(context, "Steps", plan.steps, true);
    printLines(context, "Commands for review (velmora runs none of them)", plan.commands, false);
    printLines(context, "Rollback", plan.rollback, false);
    printLines(context, "Notes", plan.notes, false);
    out << '\n'
        << (plan.isReady ? style.green("Ready for review") + ": no blockers."
                         : style.red("Blocked") + ": " + std::to_string(plan.blockers.size()) + " blocker" +
                               (plan.blockers.size() == 1 ? "" : "s") + " to resolve first.")
        << '\n';
}

void runPlanMove(CliContext& context, const std::string& typedTarget) {
    if (typedTarget.empty() || typedTarget.find('\0') != std::string::npos)
        throw UsageError("--to needs a volume or folder");
    const auto target = normalPath(typedTarget, std::filesystem::current_path().string());
    auto& machine = context.machine();
    const auto facts = dockerMoveFacts(machine, target);
    const auto plan = DockerMovePlanner::plan(facts);
    if (context.json()) {
        context.printJson(plan);
        return;
    }
    context.printSource();
    printMovePlan(context, facts, plan);
}

}  // namespace

void registerDockerCommands(CLI::App& app, CliContext& context) {
    auto* docker = app.add_subcommand(
        "docker", "Show what Docker keeps on this machine: disk image, projects, databases, bind mounts (read-only)");
    auto target = std::make_shared<std::string>();
    auto* planMove = docker->add_subcommand(
        "plan-move", "Print a plan for review to move Docker's disk image or data root to another volume");
    planMove->add_option("--to", *target, "The volume or folder it would go into")
        ->type_name("VOLUME")
        ->required()
        ->expected(1)
        ->allow_extra_args(false);
    planMove->callback([&context, target] { runPlanMove(context, *target); });

    docker->callback([&context, docker] {
        if (!docker->get_subcommands().empty()) return;
        const auto snapshot = context.machine().snapshot();
        const auto reading = DockerReading::read(context.machine(), snapshot);
        if (!reading.executable) {
            if (context.json())
                context.printJson(Json{{"installed", false}});
            else
                context.out() << "Docker CLI not found\n";
            return;
        }
        const auto& inventory = *reading.inventory;
        if (context.json()) {
            context.printJson(Json{{"installed", true},
                                   {"executable", *reading.executable},
                                   {"inventory", inventory},
                                   {"projectUsage", inventory.projectUsage()},
                                   {"databases", inventory.databases()},
                                   {"bindMounts", inventory.bindMounts()}});
            return;
        }
        printEngine(context, reading, inventory);
        printCounts(context, inventory);
        printProjects(context, inventory);
        printDatabases(context, inventory);
        printBindMounts(context, inventory);
        printDiskUsage(context, inventory);
        printErrors(context, inventory);
    });
}

}  // namespace corvel::cli
