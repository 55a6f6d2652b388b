// The machine's figures as metric families: which facts become which series, and which are left
// out because they are not known.
#include "machine/MachineMetrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::DoubleEq;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Not;
using Labels = std::vector<std::pair<std::string, std::string>>;

const MetricFamily& familyNamed(const std::vector<MetricFamily>& families, const std::string& name) {
    for (const auto& family : families)
        if (family.name == name) return family;
    throw std::runtime_error("no family " + name);
}

auto sample(const Labels& labels, double value) {
    return AllOf(Field(&MetricSample::labels, labels), Field(&MetricSample::value, DoubleEq(value)));
}

StorageVolume volume(std::string id, std::string name, std::string mountPoint, std::int64_t total,
                     std::int64_t available, bool internal) {
    StorageVolume result;
    result.id = std::move(id);
    result.name = std::move(name);
    result.mountPoint = std::move(mountPoint);
    result.fileSystemType = "apfs";
    result.totalBytes = total;
    result.availableBytes = available;
    result.isInternal = internal;
    return result;
}

PhysicalDisk disk(std::string id, std::string name, std::optional<bool> solid, SMARTStatus smart) {
    PhysicalDisk result;
    result.id = std::move(id);
    result.mediaName = std::move(name);
    result.isSolidState = solid;
    result.smartStatus = smart;
    return result;
}

SpaceNode consumer(std::string path, SpaceCategory category, CleanupRisk risk, std::int64_t allocated,
                   std::int64_t exclusive) {
    SpaceNode node;
    node.path = std::move(path);
    node.classification.category = category;
    node.classification.risk = risk;
    node.allocatedBytes = allocated;
    node.exclusiveBytes = exclusive;
    return node;
}

MachineMetrics::Input machineInput() {
    MachineMetrics::Input input;
    input.snapshot.capturedAt = ISO8601::parse("2026-11-02T10:00:00Z").value();
    input.snapshot.volumes = {volume("root", "Macintosh HD", "/", 1000, 150, true),
                              volume("usb", "Back\"up", "/Volumes/Back\"up", 500, 400, false),
                              volume("odd", "Unknown size", "/Volumes/odd", 0, 0, false)};
    input.forecasts = {{"root", 2.5}};
    auto worn = disk("disk0", "APPLE SSD AP1024Z Media", true, SMARTStatus::verified);
    worn.nvme = NVMeHealth{};
    worn.nvme->percentageUsed = 85;
    worn.nvme->temperatureCelsius = 41.5;
    input.snapshot.disks = {worn, disk("disk4", "WD Elements", false, SMARTStatus::failing),
                            disk("disk6", "USB Stick", std::nullopt, SMARTStatus::notSupported)};
    input.diagnosis.health = {{HealthDimension::physical, HealthStatus::critical, "", {}, {}},
                              {HealthDimension::usage, HealthStatus::attention, "", {}, {}},
                              {HealthDimension::connection, HealthStatus::unknown, "", {}, {}},
                              {HealthDimension::availability, HealthStatus::normal, "", {}, {}}};
    input.diagnosis.report = DiagnosticReport(
        input.snapshot.capturedAt,
        {Finding::make("disk.smart", Severity::critical, FindingSubject::disk("disk4"), "WD", "Failing", ""),
         Finding::make("volume.freeSpace", Severity::warning, FindingSubject::volume("root"), "HD", "Low", ""),
         Finding::make("volume.readOnly", Severity::info, FindingSubject::volume("usb"), "B", "RO", "")});
    input.thresholds.nvmeWearWarningPercent = 80;
    return input;
}

TEST(MachineMetrics, VolumesCarryTheirFiguresAndOnlyRealForecasts) {
    const auto families = MachineMetrics::families(machineInput());
    const Labels root{{"mountpoint", "/"}, {"volume", "Macintosh HD"}, {"fstype", "apfs"}, {"location", "internal"}};
    const Labels usb{
        {"mountpoint", "/Volumes/Back\"up"}, {"volume", "Back\"up"}, {"fstype", "apfs"}, {"location", "external"}};
    // The volume of unknown size is in no family: 0 of 0 bytes would read as full.
    EXPECT_THAT(familyNamed(families, "velmora_volume_size_bytes").samples,
                ElementsAre(sample(root, 1000), sample(usb, 500)));
    EXPECT_THAT(familyNamed(families, "velmora_volume_available_bytes").samples,
                ElementsAre(sample(root, 150), sample(usb, 400)));
    EXPECT_THAT(familyNamed(families, "velmora_volume_full_forecast_seconds").samples,
                ElementsAre(sample(root, 2.5 * 86400)));
}

TEST(MachineMetrics, DrivesReportHealthWearAndTemperatureOnlyWhereKnown) {
    const auto families = MachineMetrics::families(machineInput());
    const Labels ssd{{"disk", "disk0"}, {"model", "APPLE SSD AP1024Z"}, {"medium", "ssd"}};
    const Labels hdd{{"disk", "disk4"}, {"model", "WD Elements"}, {"medium", "hdd"}};
    EXPECT_THAT(familyNamed(families, "velmora_disk_health_failing").samples,
                ElementsAre(sample(ssd, 0), sample(hdd, 1)));  // the stick reports neither
    EXPECT_THAT(familyNamed(families, "velmora_disk_wear_ratio").samples, ElementsAre(sample(ssd, 0.85)));
    EXPECT_THAT(familyNamed(families, "velmora_disk_temperature_celsius").samples, ElementsAre(sample(ssd, 41.5)));
    EXPECT_THAT(familyNamed(families, "velmora_disk_wear_threshold_ratio").samples, ElementsAre(sample({}, 0.8)));
}

TEST(MachineMetrics, HealthDimensionsAndFindingsAreNumbers) {
    const auto families = MachineMetrics::families(machineInput());
    EXPECT_THAT(familyNamed(families, "velmora_health_dimension_severity").samples,
                ElementsAre(sample({{"dimension", "physical"}}, 3), sample({{"dimension", "usage"}}, 2),
                            sample({{"dimension", "connection"}}, -1), sample({{"dimension", "availability"}}, 0)));
    EXPECT_THAT(familyNamed(families, "velmora_findings").samples,
                ElementsAre(sample({{"severity", "ok"}}, 0), sample({{"severity", "info"}}, 1),
                            sample({{"severity", "warning"}}, 1), sample({{"severity", "critical"}}, 1)));
}

TEST(MachineMetrics, SpaceFiguresCountNestedPlacesOnceAndAreAbsentWithoutAScan) {
    auto input = machineInput();
    EXPECT_THAT(familyNamed(MachineMetrics::families(input), "velmora_space_category_bytes").samples, IsEmpty());
    EXPECT_THAT(familyNamed(MachineMetrics::families(input), "velmora_space_reclaimable_bytes").samples, IsEmpty());

    SpaceSummary summary;
    summary.scannedAt = ISO8601::parse("2026-11-01T08:00:00Z").value();
    summary.topConsumers = {
        consumer("/home/me/.docker", SpaceCategory::docker, CleanupRisk::red, 5000, 5000),
        consumer("/home/me/.docker/cache", SpaceCategory::caches, CleanupRisk::green, 700, 600),
        consumer("/home/me/.docker/cache/old", SpaceCategory::caches, CleanupRisk::green, 300, 300),
        consumer("/home/me/.cache", SpaceCategory::caches, CleanupRisk::green, 200, 150),
        consumer("/home/me/.cache/pip", SpaceCategory::packageManagers, CleanupRisk::yellow, 90, 80),
        consumer("/home/me/Library/Developer/Xcode", SpaceCategory::xcode, CleanupRisk::yellow, 4000, 3500),
        consumer("/home/me/Photos", SpaceCategory::userData, CleanupRisk::red, 9000, 9000),
    };
    input.spaceSummary = summary;
    const auto families = MachineMetrics::families(input);
    const auto& categories = familyNamed(families, "velmora_space_category_bytes").samples;
    EXPECT_THAT(categories, Contains(sample({{"category", "Docker"}}, 5000)));
    EXPECT_THAT(categories, Contains(sample({{"category", "Caches"}}, 900)));  // old/ is inside cache/
    EXPECT_THAT(categories, Contains(sample({{"category", "Package Managers"}}, 90)));
    EXPECT_THAT(categories, Contains(sample({{"category", "Simulators"}}, 0)));
    EXPECT_THAT(categories, Not(Contains(Field(&MetricSample::labels, Labels{{"category", "Personal Data"}}))));
    // cache/ 600 + .cache 150 (pip inside it) + Xcode 3500; Docker and Photos are never offered.
    EXPECT_THAT(familyNamed(families, "velmora_space_reclaimable_bytes").samples, ElementsAre(sample({}, 4250)));
    EXPECT_THAT(familyNamed(families, "velmora_space_scan_timestamp_seconds").samples,
                ElementsAre(sample({}, 1793520000)));
}

TEST(MachineMetrics, AgentAndDockerFiguresOnlyWhenThereAreSome) {
    auto input = machineInput();
    auto families = MachineMetrics::families(input);
    for (const char* name : {"velmora_docker_reclaimable_bytes", "velmora_agent_last_cycle_timestamp_seconds",
                             "velmora_agent_last_cycle_duration_seconds", "velmora_agent_interval_seconds"})
        EXPECT_THAT(familyNamed(families, name).samples, IsEmpty()) << name;

    input.dockerReclaimableBytes = 123456789;
    input.agent = MachineMetrics::AgentFigures{ISO8601::parse("2026-11-02T10:00:01.5Z").value(), 0.25, 900};
    families = MachineMetrics::families(input);
    EXPECT_THAT(familyNamed(families, "velmora_docker_reclaimable_bytes").samples, ElementsAre(sample({}, 123456789)));
    EXPECT_THAT(familyNamed(families, "velmora_agent_last_cycle_timestamp_seconds").samples,
                ElementsAre(sample({}, 1793613601.5)));
    EXPECT_THAT(familyNamed(families, "velmora_agent_last_cycle_duration_seconds").samples,
                ElementsAre(sample({}, 0.25)));
    EXPECT_THAT(familyNamed(families, "velmora_agent_interval_seconds").samples, ElementsAre(sample({}, 900)));
}

}  // namespace
}  // namespace corvel
