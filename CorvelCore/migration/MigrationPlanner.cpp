#include "migration/MigrationPlanner.h"

#include "cleanup/ManualCleanup.h"
#include "common/ByteFormat.h"
#include "common/PathText.h"
#include "common/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace corvel::MigrationPlanner {
namespace {

using ManualCleanup::shellQuoted;

// File systems without symbolic links, hard links or permission bits: a git repository (and
// most build trees) copied there loses what it relies on.
constexpr std::array<std::string_view, 4> fatFamily{"exfat", "vfat", "msdos", "fat32"};

bool isFatFamily(const StorageVolume& volume) {
    const auto type = toLower(volume.fileSystemType.value_or(""));
    return std::find(fatFamily.begin(), fatFamily.end(), type) != fatFamily.end();
}

std::string volumeText(const StorageVolume& volume) {
    return volume.name.empty() ? volume.mountPoint : volume.name + " (" + volume.mountPoint + ")";
}

std::string firstOf(const std::vector<std::string>& items, std::size_t shown) {
    std::vector<std::string> head(items.begin(),
                                  items.begin() + static_cast<std::ptrdiff_t>(std::min(shown, items.size())));
    auto text = join(head, ", ");
    if (items.size() > shown) text += fmt::format(" and {} more", items.size() - shown);
    return text;
}

std::vector<MigrationBlocker> blockersFor(const MigrationFacts& facts, const std::string& destination) {
    std::vector<MigrationBlocker> blockers;
    if (const auto problem = overlapProblem(facts.source, facts.target))
        blockers.push_back({BlockerKind::overlappingPaths, *problem});
    if (facts.destinationExists)
        blockers.push_back({BlockerKind::destinationExists,
                            destination + " already exists; choose another target or move it away first."});
    if (const auto& volume = facts.targetVolume) {
        if (volume->isReadOnly)
            blockers.push_back({BlockerKind::targetReadOnly, volumeText(*volume) + " is mounted read-only."});
        if (facts.allocatedBytes > volume->availableBytes)
            blockers.push_back(
                {BlockerKind::targetTooSmall,
                 fmt::format("{} needs {} (clones become full copies there) but only {} is free.", volumeText(*volume),
                             ByteFormat::string(facts.allocatedBytes), ByteFormat::string(volume->availableBytes))});
        if (isCaseInsensitive(*volume) && !facts.scan.caseConflicts.empty())
            blockers.push_back({BlockerKind::caseInsensitiveTarget,
                                volumeText(*volume) +
                                    " ignores case, and these names differ from a neighbour's only "
                                    "in case: " +
                                    firstOf(facts.scan.caseConflicts, 3)});
        if (isFatFamily(*volume) && facts.scan.hasGitRepository)
            blockers.push_back({BlockerKind::unsuitableFileSystem,
                                volumeText(*volume) + " is " + volume->fileSystemLabel() +
                                    ", which keeps no symbolic links or permissions; a git repository breaks there."});
    }
    if (!facts.openBy.empty())
        blockers.push_back({BlockerKind::sourceInUse, "In use by " + firstOf(facts.openBy, 3) + "; quit them first."});
    return blockers;
}

std::string copyCommand(Platform platform, const std::string& source, const std::string& destination) {
    // ditto keeps clones, extended attributes and resource forks on the home platform; rsync
    // with -aHAX keeps hard links, ACLs and extended attributes elsewhere.
    if (platform == Platform::macos) return "ditto " + shellQuoted(source) + " " + shellQuoted(destination);
    return "rsync -aHAX " + shellQuoted(source + "/") + " " + shellQuoted(destination + "/");
}

// The projectRoots setting with every root inside the workspace moved along; absent when none is.
std::optional<std::string> movedProjectRoots(const MigrationFacts& facts, const std::string& destination) {
    bool changed = false;
    std::vector<std::string> roots;
    for (const auto& root : facts.projectRoots) {
        if (isWithin(root, facts.source)) {
            roots.push_back(destination + root.substr(facts.source.size()));
            changed = true;
        } else {
            roots.push_back(root);
        }
    }
    if (!changed) return std::nullopt;
    return join(roots, ":");
}

}  // namespace

std::optional<std::string> overlapProblem(const std::string& source, const std::string& target) {
    if (source == target) return "the source and the target are the same folder: " + source;
    if (isWithin(target, source)) return "the target " + target + " lies inside the source " + source;
    if (isWithin(source, target)) return "the source " + source + " already lies inside the target " + target;
    return std::nullopt;
}

std::string destinationFor(const std::string& source, const std::string& target) {
    return joinPath(target, lastComponent(source));
}

std::optional<StorageVolume> volumeContaining(const std::vector<StorageVolume>& volumes, const std::string& path) {
    const StorageVolume* best = nullptr;
    for (const auto& volume : volumes)
        if (!volume.mountPoint.empty() && isWithin(path, volume.mountPoint) &&
            (!best || volume.mountPoint.size() > best->mountPoint.size()))
            best = &volume;
    if (!best) return std::nullopt;
    return *best;
}

bool isCaseInsensitive(const StorageVolume& volume) {
    if (volume.supportsCaseSensitiveNames) return !*volume.supportsCaseSensitiveNames;
    return isFatFamily(volume);
}

MigrationPlan plan(const MigrationFacts& facts) {
    MigrationPlan plan;
    plan.source = facts.source;
    plan.destination = destinationFor(facts.source, facts.target);
    plan.allocatedBytes = facts.allocatedBytes;
    if (facts.targetVolume) {
        plan.targetVolume =
            facts.targetVolume->name.empty() ? facts.targetVolume->mountPoint : facts.targetVolume->name;
        plan.targetAvailableBytes = facts.targetVolume->availableBytes;
    }
    plan.blockers = blockersFor(facts, plan.destination);
    plan.breakingPaths = facts.scan.breakingPaths;
    plan.isReady = plan.blockers.empty();

    const auto& source = facts.source;
    const auto& destination = plan.destination;
    const auto aside = source + ".before-move";
    const auto copy = copyCommand(facts.platform, source, destination);
    const auto verify = "velmora migrate verify " + shellQuoted(source) + " " + shellQuoted(destination);
    const auto putAside = "mv " + shellQuoted(source) + " " + shellQuoted(aside);
    const auto link = "ln -s " + shellQuoted(destination) + " " + shellQuoted(source);

    plan.steps.push_back("Quit the programs, editors and builds that use " + source + ".");
    plan.steps.push_back("Copy the workspace to " + destination + ": " + copy);
    plan.steps.push_back("Verify the copy by content: " + verify);
    plan.steps.push_back("Keep the original under another name until the move has proved itself: " + putAside);
    plan.steps.push_back("Leave a symbolic link at the old place so that old paths still lead there: " + link);
    if (!plan.breakingPaths.empty())
        plan.steps.push_back(fmt::format("Fix the {} files that name the old path (listed with their fixes).",
                                         plan.breakingPaths.size()));
    plan.commands = {copy, verify, putAside, link};
    if (const auto roots = movedProjectRoots(facts, destination)) {
        const auto settings = "velmora settings set projectRoots " + shellQuoted(*roots);
        plan.steps.push_back("Point the project roots at the new place: " + settings);
        plan.commands.push_back(settings);
    }
    plan.steps.push_back("When everything works from the new place, remove " + aside + " yourself.");

    plan.rollback = {"Remove the link (only the link): rm " + shellQuoted(source),
                     "Put the original back: mv " + shellQuoted(aside) + " " + shellQuoted(source),
                     "The copy at " + destination + " can then be removed after review."};

    if (facts.scan.binaryFilesSkipped > 0)
        plan.notes.push_back(
            fmt::format("{} binary files were not searched for the old path.", facts.scan.binaryFilesSkipped));
    for (const auto& unreadable : facts.scan.unreadable) plan.notes.push_back("Not read: " + unreadable);
    if (facts.openByProblem) plan.notes.push_back("Processes using it were not checked: " + *facts.openByProblem);
    if (facts.scan.wasCancelled) plan.notes.push_back("The search for old paths was interrupted: the list is partial.");
    if (facts.sourceVolume && facts.targetVolume && facts.sourceVolume->id == facts.targetVolume->id)
        plan.notes.push_back("The target is on the same volume as the workspace: this frees no space.");
    return plan;
}

}  // namespace corvel::MigrationPlanner
