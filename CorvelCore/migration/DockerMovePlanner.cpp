#include "migration/DockerMovePlanner.h"

#include "cleanup/ManualCleanup.h"
#include "common/ByteFormat.h"
#include "common/PathText.h"
#include "common/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace corvel::DockerMovePlanner {
namespace {

using ManualCleanup::shellQuoted;

constexpr std::string_view daemonConfig = "/etc/docker/daemon.json";

// Neither Docker Desktop's sparse image nor the engine's overlay layers survive on these.
constexpr std::array<std::string_view, 6> unsuitableTypes{"exfat", "vfat", "msdos", "fat32", "ntfs", "ntfs3"};

std::string volumeText(const StorageVolume& volume) {
    return volume.name.empty() ? volume.mountPoint : volume.name + " (" + volume.mountPoint + ")";
}

// The Mac's root is the sealed system volume, mounted read-only; the home folders and everything
// writable there live on the data volume joined to it, so "/" read-only says nothing about them.
bool isReadOnly(const DockerMoveFacts& facts, const StorageVolume& volume) {
    if (facts.platform == Platform::macos && volume.mountPoint == "/") return false;
    return volume.isReadOnly;
}

std::optional<std::string> unsuitableProblem(const StorageVolume& volume) {
    if (volume.isNetwork) return volumeText(volume) + " is a network volume; Docker's data must be on a local disk.";
    const auto type = toLower(volume.fileSystemType.value_or(""));
    if (std::find(unsuitableTypes.begin(), unsuitableTypes.end(), type) != unsuitableTypes.end())
        return fmt::format("{} is {}: it keeps no sparse files, links or permission bits that Docker's data needs.",
                           volumeText(volume), volume.fileSystemName.value_or(type));
    return std::nullopt;
}

std::vector<MigrationBlocker> blockersFor(const DockerMoveFacts& facts, const std::string& destination) {
    std::vector<MigrationBlocker> blockers;
    const bool desktop = facts.dataPath ? !facts.isDataFolder : facts.platform == Platform::macos;
    if (!facts.dataPath)
        blockers.push_back({BlockerKind::nothingToMove, facts.isInstalled
                                                            ? "No Docker disk image or data root was found to move."
                                                            : "Docker is not installed and no Docker data was found."});
    if (facts.isEngineRunning) {
        const auto version = facts.engineVersion ? " " + *facts.engineVersion : std::string();
        blockers.push_back(
            {BlockerKind::engineRunning,
             desktop ? "Docker Desktop" + version + " is running and holds its disk image open; quit it first."
                     : "The Docker engine" + version +
                           " is running and writes to its data root; stop it first "
                           "(sudo systemctl stop docker docker.socket)."});
    }
    if (facts.targetState == TargetState::missing)
        blockers.push_back({BlockerKind::targetMissing, facts.target + " does not exist."});
    if (facts.targetState == TargetState::notFolder)
        blockers.push_back({BlockerKind::targetNotFolder, facts.target + " is not a folder."});
    const auto& target = facts.targetVolume;
    if (target && facts.sourceVolume && target->mountPoint == facts.sourceVolume->mountPoint)
        blockers.push_back({BlockerKind::sameVolume, "The data is already on " + volumeText(*target) +
                                                         "; moving it within one volume frees nothing."});
    if (target) {
        if (const auto problem = unsuitableProblem(*target))
            blockers.push_back({BlockerKind::unsuitableFileSystem, *problem});
    }
    if ((target && isReadOnly(facts, *target)) || facts.isTargetWritable == false)
        blockers.push_back(
            {BlockerKind::targetReadOnly, (target ? volumeText(*target) : facts.target) + " cannot be written."});
    if (target && facts.dataPath && facts.allocatedBytes > target->availableBytes)
        blockers.push_back(
            {BlockerKind::targetTooSmall,
             fmt::format("{} has {} free; the data occupies {}.", volumeText(*target),
                         ByteFormat::string(target->availableBytes), ByteFormat::string(facts.allocatedBytes))});
    if (facts.destinationExists)
        blockers.push_back({BlockerKind::destinationExists,
                            destination + " already exists; choose another target or move it away first."});
    return blockers;
}

// Docker Desktop (on a Mac, or on Linux with its virtual machine) keeps everything in one image file.
void planDesktop(const DockerMoveFacts& facts, const std::string& destination, MigrationPlan& plan) {
    const auto image = *facts.dataPath;
    const auto name = lastComponent(image);
    const auto moved = joinPath(destination, name);
    const auto settings = desktopSettingsFile(facts.platform, facts.home);
    const bool mac = facts.platform == Platform::macos;
    plan.steps = {
        "Stop the containers you need, then quit Docker Desktop (whale menu → Quit).",
        "Copy the disk image into " + destination + " keeping it sparse.",
        "Point Docker Desktop at the new folder: \"DataFolder\" in its settings file, then start it.",
        "Check that images, containers and volumes are all there, then remove the old image yourself.",
    };
    plan.commands = {
        mac ? "osascript -e 'quit app \"Docker Desktop\"'" : "systemctl --user stop docker-desktop",
        "mkdir -p " + shellQuoted(destination),
        "rsync -aS " + shellQuoted(image) + " " + shellQuoted(destination + "/"),
        "# in " + settings + ": \"DataFolder\": \"" + destination + "\"",
        mac ? "open -a 'Docker Desktop'" : "systemctl --user start docker-desktop",
        "docker system df",
    };
    const auto folder = image.substr(0, image.size() - name.size() - 1);
    plan.rollback = {
        "Quit Docker Desktop.",
        "Set \"DataFolder\" back to " + folder + " in " + settings +
            " (or remove the key when the image was in the default location).",
        "Start Docker Desktop: it uses the old image again, untouched by the copy; remove " + moved + " yourself.",
    };
    plan.notes.push_back(
        "Docker Desktop can do the same move itself while it runs: Settings → Resources → Advanced → Disk image "
        "location, choose " +
        destination + ", then Apply & restart.");
    if (facts.targetVolume && facts.apparentBytes > facts.targetVolume->availableBytes)
        plan.notes.push_back(fmt::format("The image may grow to {} (its set size); {} has {} free.",
                                         ByteFormat::string(facts.apparentBytes), volumeText(*facts.targetVolume),
                                         ByteFormat::string(facts.targetVolume->availableBytes)));
}

void planLinux(const DockerMoveFacts& facts, const std::string& destination, MigrationPlan& plan) {
    const auto root = *facts.dataPath;
    const std::string config(daemonConfig);
    plan.steps = {
        "Stop the Docker engine and its socket so that nothing writes to " + root + ".",
        "Copy the data root with hard links, ACLs and extended attributes to " + destination + ".",
        "Set \"data-root\" in " + config + " (keep a copy of the file as it was).",
        "Start the engine and check that it reports the new root and that images, containers and volumes are there.",
        "Only then remove the old data root yourself.",
    };
    plan.commands = {
        "sudo systemctl stop docker docker.socket",
        "sudo mkdir -p " + shellQuoted(destination),
        "sudo rsync -aHAX --numeric-ids " + shellQuoted(root + "/") + " " + shellQuoted(destination + "/"),
        "sudo velmora migrate verify " + shellQuoted(root) + " " + shellQuoted(destination),
        "sudo cp -p " + config + " " + config + ".before-move",
        "# in " + config + ": \"data-root\": \"" + destination + "\"",
        "sudo systemctl start docker",
        "docker info --format '{{.DockerRootDir}}'",
    };
    plan.rollback = {
        "sudo systemctl stop docker docker.socket",
        "Put back the old " + config + " (" + config + ".before-move) or remove \"data-root\" from it.",
        "sudo systemctl start docker: the engine uses " + root + " again, untouched by the copy.",
    };
}

}  // namespace

std::string destinationFor(const DockerMoveFacts& facts) {
    return joinPath(facts.target, facts.isDataFolder ? "docker" : "DockerDesktop");
}

std::string desktopSettingsFile(Platform platform, const std::string& home) {
    return joinPath(home, platform == Platform::macos ? "Library/Group Containers/group.com.docker/settings-store.json"
                                                      : ".docker/desktop/settings-store.json");
}

MigrationPlan plan(const DockerMoveFacts& facts) {
    MigrationPlan plan;
    plan.source = facts.dataPath.value_or("");
    plan.destination = destinationFor(facts);
    plan.allocatedBytes = facts.allocatedBytes;
    if (facts.targetVolume) {
        plan.targetVolume =
            facts.targetVolume->name.empty() ? facts.targetVolume->mountPoint : facts.targetVolume->name;
        plan.targetAvailableBytes = facts.targetVolume->availableBytes;
    }
    plan.blockers = blockersFor(facts, plan.destination);
    if (facts.dataPath) {
        if (!facts.isDataFolder)
            planDesktop(facts, plan.destination, plan);
        else
            planLinux(facts, plan.destination, plan);
    }
    if (facts.targetState == TargetState::unchecked)
        plan.notes.push_back("The target was not looked at on disk (a recorded machine holds no file tree).");
    if (!facts.targetVolume)
        plan.notes.push_back("No mounted volume holds " + facts.target + "; its free space is unknown.");
    plan.isReady = plan.blockers.empty();
    return plan;
}

}  // namespace corvel::DockerMovePlanner
