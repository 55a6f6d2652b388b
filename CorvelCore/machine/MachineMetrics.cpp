#include "machine/MachineMetrics.h"

#include "common/PathText.h"
#include "machine/DockerReading.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace corvel::MachineMetrics {
namespace {

using Labels = std::vector<std::pair<std::string, std::string>>;

constexpr double secondsPerDay = 86400;

// The categories a developer's machine fills up with, in the space views' order.
constexpr std::array developerCategories{
    SpaceCategory::docker,      SpaceCategory::xcode,  SpaceCategory::simulators, SpaceCategory::virtualEnvs,
    SpaceCategory::nodeModules, SpaceCategory::caches, SpaceCategory::builds,     SpaceCategory::packageManagers};

double seconds(TimePoint time) {
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

MetricFamily family(std::string name, std::string help) {
    return MetricFamily{std::move(name), std::move(help), {}};
}

Labels volumeLabels(const StorageVolume& volume) {
    return {{"mountpoint", volume.mountPoint},
            {"volume", volume.name},
            {"fstype", volume.fileSystemType.value_or("unknown")},
            {"location", volume.isInternal ? "internal" : "external"}};
}

Labels diskLabels(const PhysicalDisk& disk) {
    const std::string medium = disk.isSolidState ? (*disk.isSolidState ? "ssd" : "hdd") : "unknown";
    return {{"disk", disk.id}, {"model", disk.displayName()}, {"medium", medium}};
}

// Unknown sits below normal: nothing proved the dimension healthy, but nothing is wrong either,
// so an alert on "at least attention" never fires for it.
double statusNumber(HealthStatus status) {
    if (status == HealthStatus::unknown) return -1;
    if (status == HealthStatus::attention) return static_cast<double>(Severity::warning);
    if (status == HealthStatus::critical) return static_cast<double>(Severity::critical);
    return static_cast<double>(Severity::ok);
}

std::vector<MetricFamily> volumeFamilies(const Input& input) {
    auto size = family("velmora_volume_size_bytes", "Size of the mounted volume in bytes.");
    auto available = family("velmora_volume_available_bytes", "Bytes available on the mounted volume.");
    auto forecast = family("velmora_volume_full_forecast_seconds",
                           "Seconds until the volume is full at its recent rate of filling up; absent for a volume "
                           "without a forecast (too little history, or not filling up).");
    for (const auto& volume : input.snapshot.volumes) {
        // A volume of unknown size has no figures worth comparing: 0 of 0 bytes would look full.
        if (volume.totalBytes < 1) continue;
        const auto labels = volumeLabels(volume);
        size.samples.push_back({labels, static_cast<double>(volume.totalBytes)});
        available.samples.push_back({labels, static_cast<double>(volume.availableBytes)});
        if (auto days = input.forecasts.find(volume.id); days != input.forecasts.end())
            forecast.samples.push_back({labels, days->second * secondsPerDay});
    }
    return {size, available, forecast};
}

std::vector<MetricFamily> diskFamilies(const Input& input) {
    auto failing = family("velmora_disk_health_failing",
                          "1 when the drive's self-monitoring reports it failing, 0 when it reports it verified; "
                          "absent when the drive reports neither.");
    auto wear =
        family("velmora_disk_wear_ratio", "Share of the drive's rated endurance used (1 = 100 %, may exceed 1).");
    auto threshold = family("velmora_disk_wear_threshold_ratio",
                            "Wear ratio at or above which Velmora reports a worn drive (the user's setting).");
    auto temperature = family("velmora_disk_temperature_celsius", "Temperature the drive reports, in degrees Celsius.");
    for (const auto& disk : input.snapshot.disks) {
        const auto labels = diskLabels(disk);
        if (disk.smartStatus == SMARTStatus::verified || disk.smartStatus == SMARTStatus::failing)
            failing.samples.push_back({labels, disk.smartStatus == SMARTStatus::failing ? 1.0 : 0.0});
        if (!disk.nvme) continue;
        if (disk.nvme->percentageUsed)
            wear.samples.push_back({labels, static_cast<double>(*disk.nvme->percentageUsed) / 100});
        if (disk.nvme->temperatureCelsius) temperature.samples.push_back({labels, *disk.nvme->temperatureCelsius});
    }
    threshold.samples.push_back({{}, static_cast<double>(input.thresholds.nvmeWearWarningPercent) / 100});
    return {failing, wear, threshold, temperature};
}

std::vector<MetricFamily> healthFamilies(const Input& input) {
    auto dimensions = family("velmora_health_dimension_severity",
                             "Health of one dimension: -1 unknown (nothing proved it healthy), 0 normal, "
                             "2 attention, 3 critical.");
    for (const auto& assessment : input.diagnosis.health)
        dimensions.samples.push_back(
            {{{"dimension", std::string(rawValue(assessment.dimension))}}, statusNumber(assessment.status)});
    auto findings = family("velmora_findings", "Findings of the last diagnosis, by severity.");
    for (const Severity severity : allCases<Severity>())
        findings.samples.push_back({{{"severity", std::string(rawValue(severity))}},
                                    static_cast<double>(input.diagnosis.report.count(severity))});
    return {dimensions, findings};
}

// Top consumers can nest (a cache inside a Docker folder); a consumer inside another one that
// `counts` already is left out, so no byte is added twice.
template <class Counts>
std::int64_t sumOutermost(const std::vector<SpaceNode>& consumers, Counts counts, std::int64_t SpaceNode::*bytes) {
    std::int64_t total = 0;
    for (const auto& node : consumers) {
        if (!counts(node)) continue;
        const bool nested = std::any_of(consumers.begin(), consumers.end(), [&](const SpaceNode& other) {
            return counts(other) && isStrictlyWithin(node.path, other.path);
        });
        if (!nested) total += node.*bytes;
    }
    return total;
}

std::vector<MetricFamily> spaceFamilies(const Input& input) {
    auto categories = family("velmora_space_category_bytes",
                             "Bytes of developer data by category among the largest places of the last space scan.");
    auto reclaimable = family("velmora_space_reclaimable_bytes",
                              "Bytes that removing the cleanup-eligible places among the last space scan's largest "
                              "would free.");
    auto scanned = family("velmora_space_scan_timestamp_seconds", "When the last space scan ran, in Unix seconds.");
    if (const auto& summary = input.spaceSummary) {
        for (const SpaceCategory category : developerCategories) {
            const auto inCategory = [category](const SpaceNode& node) {
                return node.classification.category == category;
            };
            categories.samples.push_back(
                {{{"category", std::string(rawValue(category))}},
                 static_cast<double>(sumOutermost(summary->topConsumers, inCategory, &SpaceNode::allocatedBytes))});
        }
        const auto eligible = [](const SpaceNode& node) { return isCleanupEligible(node.classification.risk); };
        reclaimable.samples.push_back(
            {{}, static_cast<double>(sumOutermost(summary->topConsumers, eligible, &SpaceNode::exclusiveBytes))});
        scanned.samples.push_back({{}, seconds(summary->scannedAt)});
    }
    return {categories, reclaimable, scanned};
}

std::vector<MetricFamily> machineFamilies(const Input& input) {
    auto docker = family("velmora_docker_reclaimable_bytes", "Bytes the Docker engine reports as reclaimable.");
    if (input.dockerReclaimableBytes)
        docker.samples.push_back({{}, static_cast<double>(*input.dockerReclaimableBytes)});
    auto snapshot = family("velmora_snapshot_timestamp_seconds", "When these figures were read, in Unix seconds.");
    snapshot.samples.push_back({{}, seconds(input.snapshot.capturedAt)});
    auto lastCycle = family("velmora_agent_last_cycle_timestamp_seconds",
                            "When the background agent's last cycle ran, in Unix seconds.");
    auto duration = family("velmora_agent_last_cycle_duration_seconds", "How long the agent's last cycle took.");
    auto interval = family("velmora_agent_interval_seconds", "Seconds between the agent's cycles.");
    if (const auto& agent = input.agent) {
        lastCycle.samples.push_back({{}, seconds(agent->lastCycleAt)});
        duration.samples.push_back({{}, agent->lastCycleSeconds});
        interval.samples.push_back({{}, static_cast<double>(agent->intervalSeconds)});
    }
    return {docker, snapshot, lastCycle, duration, interval};
}

}  // namespace

std::vector<MetricFamily> families(const Input& input) {
    std::vector<MetricFamily> result;
    for (auto&& part : {volumeFamilies(input), diskFamilies(input), healthFamilies(input), spaceFamilies(input),
                        machineFamilies(input)})
        result.insert(result.end(), part.begin(), part.end());
    return result;
}

Input gather(Machine& machine, const RefreshCycle::Result& refresh, const DiagnosticThresholds& thresholds,
             std::vector<std::string>& notes) {
    Input input;
    input.snapshot = refresh.snapshot;
    input.diagnosis = refresh.diagnosis;
    input.forecasts = refresh.forecasts;
    input.thresholds = thresholds;

    std::string problem;
    input.spaceSummary = SpaceSummary::load(machine.dataFolder(), &problem);
    if (!problem.empty()) notes.push_back("Last scan summary ignored: " + problem);
    // The data folder is this machine's: a scan of somewhere else must not speak for a recording.
    if (const RecordedMachine* recording = machine.recording();
        input.spaceSummary && recording && !isWithin(input.spaceSummary->root, recording->home))
        input.spaceSummary.reset();

    try {
        const auto docker = DockerReading::read(machine, refresh.snapshot);
        if (docker.inventory && docker.inventory->isReachable())
            input.dockerReclaimableBytes = docker.inventory->reclaimableBytes();
    } catch (const MachineError& error) {
        notes.push_back(std::string("Docker left out: ") + error.what());
    }
    return input;
}

}  // namespace corvel::MachineMetrics
