// `velmora docker`: what the Docker engine keeps on this machine, read-only. The engine's disk
// image is measured even when the engine is stopped; a missing docker program is a fact about
// the machine, not a failure of the command.
#include "CliErrors.h"
#include "Commands.h"
#include "common/ByteFormat.h"
#include "common/CheckedArithmetic.h"
#include "common/Text.h"
#include "machine/DockerReading.h"

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

}  // namespace

void registerDockerCommands(CLI::App& app, CliContext& context) {
    auto* docker = app.add_subcommand(
        "docker", "Show what Docker keeps on this machine: disk image, projects, databases, bind mounts (read-only)");
    docker->callback([&context] {
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
