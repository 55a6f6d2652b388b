#include "insights/InsightEngine.h"

#include "common/ByteFormat.h"
#include "common/Text.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace corvel::InsightEngine {
namespace {

using Kind = Insight::Kind;
using Destination = Insight::Destination;

constexpr std::size_t bigItemLimit = 8;
constexpr std::size_t reviewableNameCount = 3;
// Fixed on purpose: a drive this worn deserves attention whatever wear threshold the user chose.
constexpr int driveWearAttentionPercent = 80;

// Analysis guards instead of aborting: a sum that would overflow makes its rule not fire.
bool addGuarded(std::int64_t& total, std::int64_t amount) {
    return !__builtin_add_overflow(total, amount, &total);
}

std::string parentFolder(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return "";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

const StorageVolume* bootVolume(const StorageSnapshot& snapshot) {
    for (const auto& volume : snapshot.volumes)
        if (volume.isBootVolume) return &volume;
    return nullptr;
}

// The snapshot volume that holds a path: by the mount point the locator found, else by the
// longest mount point containing the path.
const StorageVolume* volumeHolding(const StorageSnapshot& snapshot, const DockerDiskImage& image) {
    if (image.volumeMountPoint)
        for (const auto& volume : snapshot.volumes)
            if (volume.mountPoint == *image.volumeMountPoint) return &volume;
    const StorageVolume* best = nullptr;
    for (const auto& volume : snapshot.volumes) {
        const auto& mountPoint = volume.mountPoint;
        const bool holds = mountPoint == "/" ? startsWith(image.path, "/")
                                             : image.path == mountPoint || startsWith(image.path, mountPoint + "/");
        if (holds && (!best || mountPoint.size() > best->mountPoint.size())) best = &volume;
    }
    return best;
}

void bootFilling(const Input& input, std::vector<Insight>& out) {
    const auto* boot = bootVolume(input.snapshot);
    if (!boot) return;
    const auto subject = FindingSubject::volume(boot->id);
    const auto finding =
        std::find_if(input.report.findings.begin(), input.report.findings.end(),
                     [&](const Finding& f) { return f.ruleID == "volume.freeSpace" && f.subject == subject; });
    if (finding == input.report.findings.end()) return;

    std::int64_t used = 0;
    if (__builtin_sub_overflow(boot->totalBytes, boot->availableBytes, &used)) return;
    used = std::max<std::int64_t>(used, 0);
    const double fraction =
        boot->totalBytes < 1 ? 0.0 : std::min(1.0, static_cast<double>(used) / static_cast<double>(boot->totalBytes));
    const auto percentFull = std::lround(fraction * 100.0);
    const bool analysed = !input.topConsumers.empty();
    out.push_back(Insight{
        "boot.free", Kind::space, finding->severity, "Internal SSD is " + std::to_string(percentFull) + "% full",
        ByteFormat::string(boot->availableBytes) + " free of " + ByteFormat::string(boot->totalBytes) +
            ". Find what is really using it before deleting anything.",
        used, std::nullopt, analysed ? Destination::cleanup : Destination::space, analysed ? "Review" : "Analyze"});
}

void credentialsInTrash(const Input& input, std::vector<Insight>& out) {
    if (input.credentialsInTrash.empty()) return;
    std::set<std::string> folders;
    for (const auto& path : input.credentialsInTrash) folders.insert(parentFolder(path));
    out.push_back(Insight{"safety.trash.credentials", Kind::safety, Severity::warning,
                          std::to_string(input.credentialsInTrash.size()) + " credential-like files are in the Trash",
                          "Found by name in " + std::to_string(folders.size()) +
                              " folder(s) (passwords, keys, secrets). Emptying the Trash destroys them; recover any "
                              "you still use first. Contents were not read.",
                          std::nullopt, CleanupRisk::red, Destination::cleanup, "Review"});
}

void noAnalysis(const Input& input, std::vector<Insight>& out) {
    if (!input.topConsumers.empty()) return;
    // Linux has no APFS; its copy-on-write file systems share extents between reflinked copies.
    const char* detail = input.platform == Platform::macos
                             ? "Run the analyzer to rank what uses your disk, counting APFS clones correctly."
                             : "Run the analyzer to rank what uses your disk, counting reflinked copies correctly.";
    out.push_back(Insight{"space.scan", Kind::space, Severity::info, "No storage analysis yet", detail, std::nullopt,
                          std::nullopt, Destination::space, "Analyze"});
}

void reviewableSpace(const Input& input, std::int64_t minimumBytes, std::vector<Insight>& out) {
    std::int64_t total = 0;
    std::vector<std::string> names;
    for (const auto& node : input.topConsumers) {
        if (!isCleanupEligible(node.classification.risk)) continue;
        if (!addGuarded(total, node.allocatedBytes)) return;
        if (names.size() < reviewableNameCount) names.push_back(node.name);
    }
    // Nothing eligible is nothing to suggest, whatever the threshold.
    if (names.empty() || total <= 0 || total < minimumBytes) return;
    out.push_back(Insight{
        "space.reviewable", Kind::space, Severity::warning,
        ByteFormat::string(total) + " could be reclaimed after review",
        "GREEN and YELLOW items such as " + join(names, ", ") + ". Simulate first; nothing is deleted automatically.",
        total, CleanupRisk::yellow, Destination::cleanup, "Simulate"});
}

void largeRiskyItems(const Input& input, std::int64_t minimumBytes, std::vector<Insight>& out) {
    std::size_t count = 0;
    for (const auto& node : input.topConsumers) {
        if (count == bigItemLimit) break;
        const auto risk = node.classification.risk;
        if (risk != CleanupRisk::red && risk != CleanupRisk::gray) continue;
        if (node.isAggregate() || node.allocatedBytes < minimumBytes || node.allocatedBytes <= 0) continue;
        ++count;
        out.push_back(
            Insight{"space.big." + node.path, Kind::safety, Severity::info,
                    node.name + " uses " + ByteFormat::string(node.allocatedBytes) + " in " + parentFolder(node.path),
                    node.classification.rationale + " " + std::string(explanation(risk)), node.allocatedBytes, risk,
                    Destination::space, "Inspect"});
    }
}

void sharedClones(const Input& input, std::int64_t minimumBytes, std::vector<Insight>& out) {
    std::int64_t total = 0;
    for (const auto& node : input.topConsumers)
        if (!addGuarded(total, node.sharedBytes())) return;
    std::int64_t threshold = 0;
    if (__builtin_mul_overflow(minimumBytes, 2, &threshold)) return;
    if (total <= 0 || total < threshold) return;
    out.push_back(Insight{"space.clones", Kind::space, Severity::info,
                          ByteFormat::string(total) + " are shared APFS clones",
                          "Tools that add up file sizes (du, many cleaners) count this space twice. Deleting clones "
                          "frees almost nothing.",
                          total, std::nullopt, Destination::space, "Learn more"});
}

void dockerReclaimable(const Input& input, std::int64_t minimumBytes, std::vector<Insight>& out) {
    if (!input.docker) return;
    const auto reclaimable = input.docker->reclaimableBytes();
    if (!reclaimable || *reclaimable <= 0 || *reclaimable < minimumBytes) return;
    out.push_back(Insight{"docker.reclaimable", Kind::docker, Severity::info,
                          "Docker reports " + ByteFormat::string(*reclaimable) + " reclaimable",
                          "Unused images and stopped containers. Review them in Docker; Velmora never prunes.",
                          *reclaimable, CleanupRisk::red, Destination::docker, "Review"});
}

void dockerImageMove(const Input& input, std::vector<Insight>& out) {
    if (!input.docker || !input.docker->diskImage) return;
    const auto& image = *input.docker->diskImage;
    const auto size = image.allocatedBytes;
    if (size <= 0) return;
    const auto* home = volumeHolding(input.snapshot, image);
    if (!home || !home->isInternal) return;
    const bool roomOutside =
        std::any_of(input.snapshot.volumes.begin(), input.snapshot.volumes.end(), [&](const auto& v) {
            return !v.isInternal && !v.isNetwork && !v.isReadOnly && v.fileSystemType == "apfs" &&
                   v.availableBytes >= size;
        });
    if (!roomOutside) return;
    out.push_back(Insight{"docker.move", Kind::migration, Severity::info,
                          "Docker's disk image uses " + ByteFormat::string(size) + " on the internal SSD",
                          "An external APFS volume has room for it. Plan the move with Docker Desktop's own setting.",
                          size, std::nullopt, Destination::docker, "Plan move"});
}

void localSnapshots(const Input& input, std::int64_t minimumBytes, std::vector<Insight>& out) {
    for (const auto& share : input.snapshotShares) {
        if (share.bytes <= 0 || share.bytes < minimumBytes) continue;
        const std::string held = ByteFormat::string(share.bytes);
        out.push_back(Insight{
            "snapshots." + share.mountPoint, Kind::space, Severity::info, "Local snapshots hold " + held,
            std::to_string(share.count) + (share.count == 1 ? " snapshot" : " snapshots") + " on " + share.mountPoint +
                (share.count == 1 ? " keeps " : " keep ") + held +
                " that no folder scan sees. Velmora never deletes snapshots; thin them with " +
                std::string(thinningCommand(share.kind)) + ".",
            share.bytes, std::nullopt, Destination::accounting, "Thin with " + std::string(thinningTool(share.kind))});
    }
}

void verifiedMigrations(const Input& input, std::vector<Insight>& out) {
    for (const auto& migration : input.verifiedMigrations) {
        if (migration.bytes < 1) continue;
        out.push_back(Insight{
            "migration." + migration.root, Kind::migration, Severity::info, migration.root + " is verified on the SSD",
            "Checksums match. A reviewed path swap could free " + ByteFormat::string(migration.bytes) +
                " on the internal SSD; the original is kept until you decide.",
            migration.bytes, std::nullopt, Destination::migration, "Swap plan"});
    }
}

void slowLinks(const Input& input, std::vector<Insight>& out) {
    for (const auto& topology : input.topologies)
        for (const auto& finding : topology.findings) {
            if (!isActionable(finding.severity)) continue;
            out.push_back(Insight{finding.id(), Kind::performance, finding.severity, finding.title, finding.detail,
                                  std::nullopt, std::nullopt, Destination::topology, "See path"});
        }
}

void driveHealth(const Input& input, std::vector<Insight>& out) {
    for (const auto& disk : input.snapshot.disks) {
        const bool failing = disk.smartStatus == SMARTStatus::failing;
        const bool worn =
            disk.nvme && disk.nvme->percentageUsed && *disk.nvme->percentageUsed >= driveWearAttentionPercent;
        if (!failing && !worn) continue;
        out.push_back(Insight{"health.drive." + disk.id, Kind::health, Severity::critical,
                              disk.displayName() + " needs attention",
                              "The drive reports a health problem. Back it up first.", std::nullopt, std::nullopt,
                              Destination::health, "Details"});
    }
}

}  // namespace

std::vector<Insight> insights(const Input& input, std::int64_t minimumBytes) {
    std::vector<Insight> result;
    bootFilling(input, result);
    credentialsInTrash(input, result);
    noAnalysis(input, result);
    reviewableSpace(input, minimumBytes, result);
    largeRiskyItems(input, minimumBytes, result);
    sharedClones(input, minimumBytes, result);
    dockerReclaimable(input, minimumBytes, result);
    dockerImageMove(input, result);
    localSnapshots(input, minimumBytes, result);
    verifiedMigrations(input, result);
    slowLinks(input, result);
    driveHealth(input, result);
    std::stable_sort(result.begin(), result.end(), [](const Insight& a, const Insight& b) {
        if (a.severity != b.severity) return a.severity > b.severity;
        return a.bytes.value_or(0) > b.bytes.value_or(0);
    });
    return result;
}

}  // namespace corvel::InsightEngine
