#include "diagnostics/HealthAssessment.h"

#include "common/ByteFormat.h"
#include "common/EnumTable.h"

#include <fmt/format.h>
#include <algorithm>
#include <array>
#include <ctime>

namespace corvel::HealthAssessment {

namespace {

const char* plural(std::size_t count) {
    return count == 1 ? "" : "s";
}

const StorageVolume* mountedVolume(const StorageSnapshot& snapshot, const std::string& volumeID) {
    for (const auto& volume : snapshot.volumes)
        if (volume.id == volumeID) return &volume;
    return nullptr;
}

// The first finding's title, or `fallback` when it has none to offer.
std::string firstTitle(const std::vector<Finding>& findings, const char* fallback) {
    if (findings.empty() || findings.front().title.empty()) return fallback;
    return findings.front().title;
}

struct Verdict {
    HealthStatus status;
    std::string summary;
};

std::vector<std::string> physicalEvidence(const StorageSnapshot& snapshot) {
    std::vector<std::string> lines;
    for (const auto& disk : snapshot.disks) {
        std::string line = disk.displayName() + ": SMART " + std::string(label(disk.smartStatus));
        if (disk.nvme && disk.nvme->percentageUsed) line += fmt::format(", wear {}%", *disk.nvme->percentageUsed);
        lines.push_back(std::move(line));
    }
    return lines;
}

Verdict physicalVerdict(const StorageSnapshot& snapshot) {
    const auto verified =
        static_cast<std::size_t>(std::count_if(snapshot.disks.begin(), snapshot.disks.end(), [](const PhysicalDisk& d) {
            return d.smartStatus == SMARTStatus::verified;
        }));
    if (verified == 0) return {HealthStatus::unknown, "No drive exposes health data."};
    if (verified == snapshot.disks.size()) return {HealthStatus::normal, "All drives report SMART verified."};
    // Drives without a verdict are not proven healthy, so the whole dimension stays unknown.
    const std::size_t unproven = snapshot.disks.size() - verified;
    return {HealthStatus::unknown,
            fmt::format("{} verified; {} drive{} can't report SMART.", verified, unproven, plural(unproven))};
}

std::vector<const StorageVolume*> localVolumes(const StorageSnapshot& snapshot) {
    std::vector<const StorageVolume*> volumes;
    for (const auto& volume : snapshot.volumes)
        if (!volume.isNetwork) volumes.push_back(&volume);
    return volumes;
}

std::vector<std::string> fileSystemEvidence(const std::vector<const StorageVolume*>& volumes,
                                            const std::map<std::string, TimePoint>& verified) {
    std::vector<std::string> lines;
    for (const auto* volume : volumes) {
        const auto found = verified.find(volume->id);
        lines.push_back(volume->name + ": " + volume->fileSystemLabel() + ", " +
                        (found != verified.end() ? "verified " + verificationDateText(found->second)
                                                 : std::string("not verified by this app")));
    }
    return lines;
}

Verdict fileSystemVerdict(const std::vector<const StorageVolume*>& volumes,
                          const std::map<std::string, TimePoint>& verified) {
    // With no local volume at all nothing was verified, so there is no proof either.
    const bool allVerified =
        !volumes.empty() &&
        std::all_of(volumes.begin(), volumes.end(), [&](const StorageVolume* v) { return verified.count(v->id) > 0; });
    if (allVerified) return {HealthStatus::normal, "All volumes verified."};
    return {HealthStatus::unknown, "Formats look suitable; integrity not verified (run Verify in Disk Operations)."};
}

std::vector<std::string> usageEvidence(const std::vector<const StorageVolume*>& volumes) {
    std::vector<std::string> lines;
    for (const auto* volume : volumes)
        lines.push_back(volume->name + ": " + ByteFormat::string(volume->availableBytes) + " free of " +
                        ByteFormat::string(volume->totalBytes));
    return lines;
}

Verdict usageVerdict(const std::vector<const StorageVolume*>& volumes) {
    if (volumes.empty()) return {HealthStatus::unknown, "No local volume to measure."};
    return {HealthStatus::normal, "Free space within thresholds."};
}

const DeviceTopology* topologyOf(const std::vector<DeviceTopology>& topologies, const std::string& diskID) {
    for (const auto& topology : topologies)
        if (topology.diskID == diskID) return &topology;
    return nullptr;
}

bool isInspected(const std::vector<DeviceTopology>& topologies, const PhysicalDisk& disk) {
    const auto* topology = topologyOf(topologies, disk.id);
    return topology && topology->isInspected();
}

std::vector<std::string> connectionEvidence(const StorageSnapshot& snapshot,
                                            const std::vector<DeviceTopology>& topologies) {
    std::vector<std::string> lines;
    for (const auto& topology : topologies) {
        auto links = topology.linkEvidence();
        lines.insert(lines.end(), links.begin(), links.end());
    }
    // Once anything was inspected, say which disks were not, so the unknown is explained.
    const bool anyInspected =
        std::any_of(topologies.begin(), topologies.end(), [](const DeviceTopology& t) { return t.isInspected(); });
    if (!anyInspected) return lines;
    for (const auto& disk : snapshot.disks)
        if (!isInspected(topologies, disk)) lines.push_back(disk.displayName() + ": connection not inspected");
    return lines;
}

// Normal needs proof for every disk: each one's path located and its link speed read (or a
// transport without a negotiated link). One disk we could not follow keeps the dimension unknown.
Verdict connectionVerdict(const StorageSnapshot& snapshot, const std::vector<DeviceTopology>& topologies) {
    const auto inspectedTopologies = static_cast<std::size_t>(
        std::count_if(topologies.begin(), topologies.end(), [](const DeviceTopology& t) { return t.isInspected(); }));
    if (inspectedTopologies == 0) return {HealthStatus::unknown, "Topology not yet inspected."};
    const auto inspectedDisks =
        static_cast<std::size_t>(std::count_if(snapshot.disks.begin(), snapshot.disks.end(),
                                               [&](const PhysicalDisk& d) { return isInspected(topologies, d); }));
    if (inspectedDisks < snapshot.disks.size())
        return {HealthStatus::unknown,
                fmt::format("Link speed known for {} of {} disks.", inspectedDisks, snapshot.disks.size())};
    if (snapshot.disks.empty() && inspectedTopologies < topologies.size())
        return {HealthStatus::unknown, "Topology not yet inspected."};
    return {HealthStatus::normal, "Links run at the speeds the hardware reports."};
}

std::vector<std::string> availabilityEvidence(const StorageSnapshot& snapshot,
                                              const std::vector<ExpectedVolume>& expected) {
    std::vector<std::string> lines;
    for (const auto& volume : expected) {
        if (const auto* mounted = mountedVolume(snapshot, volume.volumeID))
            lines.push_back(volume.name + " mounted at " + mounted->mountPoint);
        else
            lines.push_back(volume.name + " expected but not mounted");
    }
    return lines;
}

}  // namespace

std::vector<Finding> availability(const StorageSnapshot& snapshot, const std::vector<ExpectedVolume>& expected) {
    std::vector<Finding> findings;
    for (const auto& volume : expected) {
        if (mountedVolume(snapshot, volume.volumeID)) continue;
        findings.push_back(Finding::make(
            "availability.missing", Severity::critical, FindingSubject::volume(volume.volumeID), volume.name,
            volume.name + " is not connected", volume.name + " is used as " + volume.reason + " but is not mounted.",
            "Reconnect the drive before opening projects or starting Docker.",
            "No mounted volume with UUID " + volume.volumeID,
            "Projects, symlinks or containers that point to this volume will fail."));
    }
    return findings;
}

std::vector<DimensionAssessment> assess(const StorageSnapshot& snapshot, const DiagnosticReport& report,
                                        const std::vector<DeviceTopology>& topologies,
                                        const std::vector<ExpectedVolume>& expectedVolumes,
                                        const std::map<std::string, TimePoint>& verifiedFileSystems) {
    std::vector<Finding> collected = report.findings;
    for (const auto& topology : topologies)
        collected.insert(collected.end(), topology.findings.begin(), topology.findings.end());
    auto missing = availability(snapshot, expectedVolumes);
    collected.insert(collected.end(), missing.begin(), missing.end());

    const auto local = localVolumes(snapshot);
    std::vector<DimensionAssessment> assessments;
    for (const auto dimension : allCases<HealthDimension>()) {
        DimensionAssessment assessment;
        assessment.dimension = dimension;
        for (const auto& finding : collected)
            if (finding.dimension == dimension && isActionable(finding.severity))
                assessment.findings.push_back(finding);

        Verdict withoutFindings{HealthStatus::unknown, ""};
        std::string withFindings;
        switch (dimension) {
            case HealthDimension::physical:
                assessment.evidence = physicalEvidence(snapshot);
                withFindings = fmt::format("{} physical issue{} reported by the drives.", assessment.findings.size(),
                                           plural(assessment.findings.size()));
                if (assessment.findings.empty()) withoutFindings = physicalVerdict(snapshot);
                break;
            case HealthDimension::fileSystem:
                assessment.evidence = fileSystemEvidence(local, verifiedFileSystems);
                withFindings = firstTitle(assessment.findings, "File system issue");
                withoutFindings = fileSystemVerdict(local, verifiedFileSystems);
                break;
            case HealthDimension::usage:
                assessment.evidence = usageEvidence(local);
                withFindings = firstTitle(assessment.findings, "Storage usage issue");
                withoutFindings = usageVerdict(local);
                break;
            case HealthDimension::connection:
                assessment.evidence = connectionEvidence(snapshot, topologies);
                withFindings = firstTitle(assessment.findings, "Connection issue");
                withoutFindings = connectionVerdict(snapshot, topologies);
                break;
            case HealthDimension::availability:
                assessment.evidence = availabilityEvidence(snapshot, expectedVolumes);
                withFindings = firstTitle(assessment.findings, "Availability issue");
                withoutFindings = {HealthStatus::normal, "All expected volumes are online."};
                break;
        }

        if (assessment.findings.empty()) {
            assessment.status = withoutFindings.status;
            assessment.summary = std::move(withoutFindings.summary);
        } else {
            auto highest = Severity::ok;
            for (const auto& finding : assessment.findings) highest = std::max(highest, finding.severity);
            assessment.status = healthStatusFor(highest);
            assessment.summary = std::move(withFindings);
        }
        assessments.push_back(std::move(assessment));
    }
    return assessments;
}

std::string verificationDateText(TimePoint time) {
    static constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    if (!localtime_r(&seconds, &local)) return ISO8601::format(time);
    return fmt::format("{} {}, {} at {:02}:{:02}", months.at(static_cast<std::size_t>(local.tm_mon)), local.tm_mday,
                       local.tm_year + 1900, local.tm_hour, local.tm_min);
}

}  // namespace corvel::HealthAssessment
