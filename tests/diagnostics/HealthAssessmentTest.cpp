#include "DiagnosticsFixtures.h"
#include "diagnostics/DiagnosticEngine.h"
#include "diagnostics/HealthAssessment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace corvel {
namespace {

using HealthAssessment::ExpectedVolume;
using testing::externalDisk;
using testing::GB;
using testing::internalDisk;
using testing::NVMe;
using testing::volume;

struct Inputs {
    StorageSnapshot snapshot;
    std::vector<DeviceTopology> topologies;
    std::vector<ExpectedVolume> expected;
    std::map<std::string, TimePoint> verified;
    std::optional<DiagnosticReport> report;  // evaluated from the snapshot when absent

    std::vector<DimensionAssessment> assess() const {
        const auto used = report ? *report : DiagnosticEngine().evaluate(snapshot);
        return HealthAssessment::assess(snapshot, used, topologies, expected, verified);
    }
    DimensionAssessment dimension(HealthDimension which) const {
        for (auto& assessment : assess())
            if (assessment.dimension == which) return assessment;
        ADD_FAILURE() << "no assessment for " << rawValue(which);
        return {};
    }
};

// A healthy laptop: one verified internal disk carrying one roomy volume.
Inputs laptop() {
    Inputs in;
    in.snapshot.disks.push_back(internalDisk("disk0", "APPLE SSD AP1024Z Media"));
    in.snapshot.volumes.push_back(volume("DATA", "Data", 1000 * GB, 600 * GB));
    return in;
}

TEST(HealthAssessment, FiveDimensionsInOrder) {
    const auto health = laptop().assess();
    ASSERT_EQ(health.size(), 5u);
    const auto cases = allCases<HealthDimension>();
    for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(health[i].dimension, cases[i]);
}

TEST(PhysicalDimension, AllVerifiedIsNormalWithWearInEvidence) {
    auto in = laptop();
    in.snapshot.disks[0].nvme = NVMe().used(3);
    const auto physical = in.dimension(HealthDimension::physical);
    EXPECT_EQ(physical.status, HealthStatus::normal);
    EXPECT_EQ(physical.summary, "All drives report SMART verified.");
    EXPECT_EQ(physical.evidence, std::vector<std::string>{"APPLE SSD AP1024Z: SMART Verified, wear 3%"});
    EXPECT_TRUE(physical.findings.empty());
}

TEST(PhysicalDimension, AnUnprovenDriveKeepsItUnknownEvenWithoutFindings) {
    auto in = laptop();
    in.snapshot.disks.push_back(externalDisk("disk4", "Samsung T7 Media"));
    const auto physical = in.dimension(HealthDimension::physical);
    EXPECT_EQ(physical.status, HealthStatus::unknown);
    EXPECT_EQ(physical.summary, "1 verified; 1 drive can't report SMART.");
    EXPECT_EQ(physical.evidence,
              (std::vector<std::string>{"APPLE SSD AP1024Z: SMART Verified", "Samsung T7: SMART Not Supported"}));
    // The info finding about the bridge is not listed.
    EXPECT_TRUE(physical.findings.empty());

    auto unknownDisk = externalDisk("disk5", "");
    unknownDisk.smartStatus = SMARTStatus::unknown;
    in.snapshot.disks.push_back(unknownDisk);
    EXPECT_EQ(in.dimension(HealthDimension::physical).summary, "1 verified; 2 drives can't report SMART.");
}

TEST(PhysicalDimension, NoVerifiedDriveOrNoDriveIsUnknown) {
    Inputs none;
    EXPECT_EQ(none.dimension(HealthDimension::physical).status, HealthStatus::unknown);
    EXPECT_EQ(none.dimension(HealthDimension::physical).summary, "No drive exposes health data.");
    EXPECT_TRUE(none.dimension(HealthDimension::physical).evidence.empty());

    Inputs external;
    external.snapshot.disks.push_back(externalDisk());
    EXPECT_EQ(external.dimension(HealthDimension::physical).summary, "No drive exposes health data.");
}

TEST(PhysicalDimension, FailingDriveIsCriticalWithSingularSummary) {
    auto in = laptop();
    in.snapshot.disks[0].smartStatus = SMARTStatus::failing;
    const auto physical = in.dimension(HealthDimension::physical);
    EXPECT_EQ(physical.status, HealthStatus::critical);
    EXPECT_EQ(physical.summary, "1 physical issue reported by the drives.");
    ASSERT_EQ(physical.findings.size(), 1u);
    EXPECT_EQ(physical.findings[0].ruleID, "disk.smart");
    EXPECT_EQ(physical.evidence, std::vector<std::string>{"APPLE SSD AP1024Z: SMART Failing"});

    in.snapshot.disks[0].nvme = NVMe().temperature(71.0);
    EXPECT_EQ(in.dimension(HealthDimension::physical).summary, "2 physical issues reported by the drives.");
}

TEST(PhysicalDimension, WarningsOnlyGiveAttention) {
    auto in = laptop();
    in.snapshot.disks[0].nvme = NVMe().mediaErrors(1);
    EXPECT_EQ(in.dimension(HealthDimension::physical).status, HealthStatus::attention);
}

TEST(FileSystemDimension, UnknownUntilEveryLocalVolumeIsVerified) {
    auto in = laptop();
    auto share = volume("NAS", "NAS", 4000 * GB, 10 * GB);
    share.isNetwork = true;
    in.snapshot.volumes.push_back(share);

    auto fs = in.dimension(HealthDimension::fileSystem);
    EXPECT_EQ(fs.status, HealthStatus::unknown);
    EXPECT_EQ(fs.summary, "Formats look suitable; integrity not verified (run Verify in Disk Operations).");
    // The network share contributes no evidence line.
    EXPECT_EQ(fs.evidence, std::vector<std::string>{"Data: APFS, not verified by this app"});

    in.verified["DATA"] = *ISO8601::parse("2026-11-02T09:30:00Z");
    fs = in.dimension(HealthDimension::fileSystem);
    EXPECT_EQ(fs.status, HealthStatus::normal);
    EXPECT_EQ(fs.summary, "All volumes verified.");
    ASSERT_EQ(fs.evidence.size(), 1u);
    EXPECT_EQ(fs.evidence[0].rfind("Data: APFS, verified ", 0), 0u) << fs.evidence[0];
}

TEST(FileSystemDimension, NoLocalVolumeIsNoProof) {
    Inputs in;
    EXPECT_EQ(in.dimension(HealthDimension::fileSystem).status, HealthStatus::unknown);
}

TEST(FileSystemDimension, InfoFindingsAreNotListedAndDoNotChangeStatus) {
    auto in = laptop();
    auto work = testing::externalVolume("WORK", "Work");
    work.ownershipEnabled = false;
    in.snapshot.volumes.push_back(work);
    in.verified = {{"DATA", TimePoint{}}, {"WORK", TimePoint{}}};
    const auto fs = in.dimension(HealthDimension::fileSystem);
    EXPECT_EQ(fs.status, HealthStatus::normal);
    EXPECT_TRUE(fs.findings.empty());
}

TEST(FileSystemDimension, FirstFindingTitleIsTheSummary) {
    auto in = laptop();
    auto stick = testing::externalVolume("STICK", "STICK");
    stick.fileSystemType = "msdos";
    stick.fileSystemName = "MS-DOS (FAT32)";
    stick.isReadOnly = true;
    in.snapshot.volumes.push_back(stick);
    const auto fs = in.dimension(HealthDimension::fileSystem);
    EXPECT_EQ(fs.status, HealthStatus::attention);
    ASSERT_EQ(fs.findings.size(), 2u);
    // Same severity and subject: rule ids decide, so the format finding comes first.
    EXPECT_EQ(fs.summary, "MS-DOS (FAT32) isn't suited to development");
    EXPECT_EQ(fs.evidence[1], "STICK: MS-DOS (FAT32), not verified by this app");
}

TEST(UsageDimension, EvidencePerLocalVolumeAndSummaryFromFindings) {
    auto in = laptop();
    auto usage = in.dimension(HealthDimension::usage);
    EXPECT_EQ(usage.status, HealthStatus::normal);
    EXPECT_EQ(usage.summary, "Free space within thresholds.");
    EXPECT_EQ(usage.evidence, std::vector<std::string>{"Data: 600 GB free of 1 TB"});

    in.snapshot.volumes[0].availableBytes = 20 * GB;
    usage = in.dimension(HealthDimension::usage);
    EXPECT_EQ(usage.status, HealthStatus::critical);
    EXPECT_EQ(usage.summary, "Almost out of space");
    EXPECT_EQ(usage.evidence, std::vector<std::string>{"Data: 20 GB free of 1 TB"});
}

TEST(UsageDimension, NothingToMeasureIsUnknown) {
    Inputs in;
    auto share = volume("NAS", "NAS", 4000 * GB, 3000 * GB);
    share.isNetwork = true;
    in.snapshot.volumes.push_back(share);
    const auto usage = in.dimension(HealthDimension::usage);
    EXPECT_EQ(usage.status, HealthStatus::unknown);
    EXPECT_TRUE(usage.evidence.empty());
}

TEST(ConnectionDimension, UnknownUntilTopologyIsInspected) {
    auto in = laptop();
    auto connection = in.dimension(HealthDimension::connection);
    EXPECT_EQ(connection.status, HealthStatus::unknown);
    EXPECT_EQ(connection.summary, "Topology not yet inspected.");
    EXPECT_TRUE(connection.evidence.empty());

    in.snapshot.disks.push_back(externalDisk("disk4", "Samsung T7 Media"));
    DeviceTopology topology;
    topology.diskID = "disk4";
    topology.path = {TopologyNode{"Thunderbolt 4 port", "port", 40'000'000'000, {}, {}},
                     TopologyNode{"USB bridge", "bridge", 10'000'000'000, {"bottleneck"}, {}},
                     TopologyNode{"Samsung T7", "disk", std::nullopt, {}, {}}};
    topology.transport = "usb";
    in.topologies.push_back(topology);
    // A path without the speed the disk runs at proves nothing.
    connection = in.dimension(HealthDimension::connection);
    EXPECT_EQ(connection.status, HealthStatus::unknown);

    in.topologies[0].effectiveLinkBitsPerSecond = 10'000'000'000;
    connection = in.dimension(HealthDimension::connection);
    EXPECT_EQ(connection.status, HealthStatus::unknown);
    EXPECT_EQ(connection.summary, "Link speed known for 1 of 2 disks.");
    EXPECT_THAT(connection.evidence, ::testing::Contains("APPLE SSD AP1024Z: connection not inspected"));

    // The internal disk on the chip's fabric has no link that could run slow.
    DeviceTopology internal;
    internal.diskID = "disk0";
    internal.path = {TopologyNode{"Apple Fabric", "controller", std::nullopt, {}, {}}};
    internal.transport = "fabric";
    in.topologies.push_back(internal);
    connection = in.dimension(HealthDimension::connection);
    EXPECT_EQ(connection.status, HealthStatus::normal);
    EXPECT_EQ(connection.summary, "Links run at the speeds the hardware reports.");
    EXPECT_EQ(connection.evidence,
              (std::vector<std::string>{"Thunderbolt 4 port: 40 Gb/s", "USB bridge: 10 Gb/s, bottleneck"}));
}

TEST(ConnectionDimension, TopologyFindingsDriveIt) {
    auto in = laptop();
    DeviceTopology topology;
    topology.diskID = "disk4";
    topology.findings.push_back(Finding::make("topology.linkSpeed", Severity::warning, FindingSubject::disk("disk4"),
                                              "T7", "Drive runs at USB 2 speed", "detail"));
    topology.findings.push_back(
        Finding::make("topology.note", Severity::info, FindingSubject::disk("disk4"), "T7", "Info only", "detail"));
    in.topologies.push_back(topology);
    const auto connection = in.dimension(HealthDimension::connection);
    EXPECT_EQ(connection.status, HealthStatus::attention);
    EXPECT_EQ(connection.summary, "Drive runs at USB 2 speed");
    EXPECT_EQ(connection.findings.size(), 1u);
}

TEST(LinkSpeedText, DecimalUnitsWithOneDecimalAtMost) {
    EXPECT_EQ(linkSpeedText(480'000'000), "480 Mb/s");
    EXPECT_EQ(linkSpeedText(5'000'000'000), "5 Gb/s");
    EXPECT_EQ(linkSpeedText(2'500'000'000), "2.5 Gb/s");
    EXPECT_EQ(linkSpeedText(12'000'000), "12 Mb/s");
    EXPECT_EQ(linkSpeedText(1'500'000), "1.5 Mb/s");
    EXPECT_EQ(linkSpeedText(64'000), "64 kb/s");
    EXPECT_EQ(linkSpeedText(300), "300 b/s");
}

TEST(AvailabilityDimension, MissingExpectedVolumeIsCritical) {
    auto in = laptop();
    in.expected = {ExpectedVolume{"DATA", "Data", "the workspace"},
                   ExpectedVolume{"6A1F-UUID", "Work SSD", "the Docker data location"}};
    const auto availability = in.dimension(HealthDimension::availability);
    EXPECT_EQ(availability.status, HealthStatus::critical);
    EXPECT_EQ(availability.summary, "Work SSD is not connected");
    EXPECT_EQ(availability.evidence,
              (std::vector<std::string>{"Data mounted at /Volumes/Data", "Work SSD expected but not mounted"}));
    ASSERT_EQ(availability.findings.size(), 1u);
    const auto& f = availability.findings[0];
    EXPECT_EQ(f.ruleID, "availability.missing");
    EXPECT_EQ(f.severity, Severity::critical);
    EXPECT_EQ(f.subject, FindingSubject::volume("6A1F-UUID"));
    EXPECT_EQ(f.subjectName, "Work SSD");
    EXPECT_EQ(f.dimension, HealthDimension::availability);
    EXPECT_EQ(f.detail, "Work SSD is used as the Docker data location but is not mounted.");
    EXPECT_EQ(f.recommendation, "Reconnect the drive before opening projects or starting Docker.");
    EXPECT_EQ(f.evidence, "No mounted volume with UUID 6A1F-UUID");
    EXPECT_EQ(f.impact, "Projects, symlinks or containers that point to this volume will fail.");
}

TEST(AvailabilityDimension, NothingExpectedOrEverythingMountedIsOnline) {
    auto in = laptop();
    auto availability = in.dimension(HealthDimension::availability);
    EXPECT_EQ(availability.status, HealthStatus::normal);
    EXPECT_EQ(availability.summary, "All expected volumes are online.");
    EXPECT_TRUE(availability.evidence.empty());

    in.expected = {ExpectedVolume{"DATA", "Data", "the workspace"}};
    availability = in.dimension(HealthDimension::availability);
    EXPECT_EQ(availability.status, HealthStatus::normal);
    EXPECT_EQ(availability.evidence, std::vector<std::string>{"Data mounted at /Volumes/Data"});
}

TEST(AvailabilityDimension, VolumeIdMatchIsExact) {
    auto in = laptop();
    EXPECT_EQ(HealthAssessment::availability(in.snapshot, {ExpectedVolume{"data", "Data", "x"}}).size(), 1u);
    EXPECT_TRUE(HealthAssessment::availability(in.snapshot, {ExpectedVolume{"DATA", "Data", "x"}}).empty());
}

TEST(HealthAssessment, DimensionsOnlyTakeTheirOwnFindings) {
    auto in = laptop();
    in.report = DiagnosticReport(TimePoint{}, {Finding::make("volume.freeSpace", Severity::warning,
                                                             FindingSubject::volume("DATA"), "Data", "Low", "d")});
    const auto health = in.assess();
    EXPECT_EQ(health[0].status, HealthStatus::normal);     // physical
    EXPECT_EQ(health[2].status, HealthStatus::attention);  // usage
    EXPECT_EQ(health[2].summary, "Low");
    for (std::size_t i : {0u, 1u, 3u, 4u}) EXPECT_TRUE(health[i].findings.empty()) << i;
}

TEST(HealthAssessment, DimensionAssessmentJsonRoundTrips) {
    auto in = laptop();
    in.snapshot.disks[0].smartStatus = SMARTStatus::failing;
    const auto health = in.assess();
    const Json j = health;
    EXPECT_EQ(j[0]["dimension"], "physical");
    EXPECT_EQ(j[0]["status"], "critical");
    EXPECT_EQ(j[0]["findings"][0]["severity"], 3);
    EXPECT_EQ(j.get<std::vector<DimensionAssessment>>(), health);
}

TEST(VerificationDateText, AbbreviatedDateAndShortTime) {
    const char* previous = std::getenv("TZ");
    const std::string saved = previous ? previous : "";
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    EXPECT_EQ(HealthAssessment::verificationDateText(*ISO8601::parse("2026-11-02T09:30:59Z")), "Nov 2, 2026 at 09:30");
    EXPECT_EQ(HealthAssessment::verificationDateText(*ISO8601::parse("2026-01-31T23:05:00Z")), "Jan 31, 2026 at 23:05");
    if (previous)
        ::setenv("TZ", saved.c_str(), 1);
    else
        ::unsetenv("TZ");
    ::tzset();
}

}  // namespace
}  // namespace corvel
