#include "DiagnosticsFixtures.h"
#include "diagnostics/DiagnosticEngine.h"
#include "diagnostics/HealthAssessment.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <functional>

namespace corvel {
namespace {

using HealthAssessment::ExpectedVolume;
using ::testing::ElementsAre;
using testing::externalDisk;
using ::testing::Field;
using testing::GB;
using testing::internalDisk;
using ::testing::IsEmpty;
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
};

// A healthy laptop: one verified internal disk carrying one roomy volume.
Inputs laptop(std::function<void(Inputs&)> change = {}) {
    Inputs in;
    in.snapshot.disks.push_back(internalDisk("disk0", "APPLE SSD AP1024Z Media"));
    in.snapshot.volumes.push_back(volume("DATA", "Data", 1000 * GB, 600 * GB));
    if (change) change(in);
    return in;
}

// Nothing known but what `change` adds.
Inputs nothingBut(const std::function<void(Inputs&)>& change) {
    Inputs in;
    change(in);
    return in;
}

StorageVolume networkShare(std::int64_t available) {
    auto share = volume("NAS", "NAS", 4000 * GB, available);
    share.isNetwork = true;
    return share;
}

DeviceTopology topology(std::vector<Finding> findings = {}) {
    DeviceTopology result;
    result.diskID = "disk4";
    result.path = {TopologyNode{"Thunderbolt 4 port", "port", 40'000'000'000, {}, {}},
                   TopologyNode{"USB bridge", "bridge", 10'000'000'000, {"bottleneck"}, {}},
                   TopologyNode{"Samsung T7", "disk", std::nullopt, {}, {}}};
    result.transport = "usb";
    result.findings = std::move(findings);
    return result;
}

// Each scenario moves one dimension across a boundary; the golden file holds the status,
// summary, evidence and listed findings of all five dimensions for every one of them.
std::vector<std::pair<std::string, Inputs>> scenarios() {
    const auto failing = [](Inputs& in) { in.snapshot.disks[0].smartStatus = SMARTStatus::failing; };
    return {
        {"healthy laptop with wear", laptop([](Inputs& in) { in.snapshot.disks[0].nvme = NVMe().used(3); })},
        {"one drive can't report SMART",
         laptop([](Inputs& in) { in.snapshot.disks.push_back(externalDisk("disk4", "Samsung T7 Media")); })},
        {"two drives can't report SMART", laptop([](Inputs& in) {
             in.snapshot.disks.push_back(externalDisk("disk4", "Samsung T7 Media"));
             auto unknown = externalDisk("disk5", "");
             unknown.smartStatus = SMARTStatus::unknown;
             in.snapshot.disks.push_back(unknown);
         })},
        {"nothing known", Inputs{}},
        {"only an external drive", nothingBut([](Inputs& in) { in.snapshot.disks.push_back(externalDisk()); })},
        {"failing drive", laptop(failing)},
        {"failing and hot drive", laptop([&](Inputs& in) {
             failing(in);
             in.snapshot.disks[0].nvme = NVMe().temperature(71.0);
         })},
        {"media error only", laptop([](Inputs& in) { in.snapshot.disks[0].nvme = NVMe().mediaErrors(1); })},
        {"unverified volume beside a full network share",
         laptop([](Inputs& in) { in.snapshot.volumes.push_back(networkShare(10 * GB)); })},
        {"every local volume verified", laptop([](Inputs& in) {
             in.snapshot.volumes.push_back(networkShare(10 * GB));
             in.verified["DATA"] = *ISO8601::parse("2026-11-02T09:30:00Z");
         })},
        {"verified, with an info finding only", laptop([](Inputs& in) {
             auto work = testing::externalVolume("WORK", "Work");
             work.ownershipEnabled = false;
             in.snapshot.volumes.push_back(work);
             in.verified = {{"DATA", TimePoint{}}, {"WORK", TimePoint{}}};
         })},
        {"read-only FAT stick", laptop([](Inputs& in) {
             auto stick = testing::externalVolume("STICK", "STICK");
             stick.fileSystemType = "msdos";
             stick.fileSystemName = "MS-DOS (FAT32)";
             stick.isReadOnly = true;
             in.snapshot.volumes.push_back(stick);
         })},
        {"almost full", laptop([](Inputs& in) { in.snapshot.volumes[0].availableBytes = 20 * GB; })},
        {"network share only", nothingBut([](Inputs& in) { in.snapshot.volumes.push_back(networkShare(3000 * GB)); })},
        // A path without the speed the disk runs at proves nothing.
        {"path without its link speed", laptop([](Inputs& in) {
             in.snapshot.disks.push_back(externalDisk("disk4", "Samsung T7 Media"));
             in.topologies.push_back(topology());
         })},
        {"link speed known for one disk of two", laptop([](Inputs& in) {
             in.snapshot.disks.push_back(externalDisk("disk4", "Samsung T7 Media"));
             in.topologies.push_back(topology());
             in.topologies[0].effectiveLinkBitsPerSecond = 10'000'000'000;
         })},
        // The internal disk on the chip's fabric has no link that could run slow.
        {"every disk's path followed", laptop([](Inputs& in) {
             in.snapshot.disks.push_back(externalDisk("disk4", "Samsung T7 Media"));
             in.topologies.push_back(topology());
             in.topologies[0].effectiveLinkBitsPerSecond = 10'000'000'000;
             DeviceTopology internal;
             internal.diskID = "disk0";
             internal.path = {TopologyNode{"Apple Fabric", "controller", std::nullopt, {}, {}}};
             internal.transport = "fabric";
             in.topologies.push_back(internal);
         })},
        {"slow link", laptop([](Inputs& in) {
             in.topologies.push_back(
                 topology({Finding::make("topology.linkSpeed", Severity::warning, FindingSubject::disk("disk4"), "T7",
                                         "Drive runs at USB 2 speed", "detail"),
                           Finding::make("topology.note", Severity::info, FindingSubject::disk("disk4"), "T7",
                                         "Info only", "detail")}));
         })},
        {"expected volume missing", laptop([](Inputs& in) {
             in.expected = {ExpectedVolume{"DATA", "Data", "the workspace"},
                            ExpectedVolume{"6A1F-UUID", "Work SSD", "the Docker data location"}};
         })},
        {"expected volume mounted", laptop([](Inputs& in) {
             in.expected = {ExpectedVolume{"DATA", "Data", "the workspace"}};
         })},
        {"a report finding goes to its own dimension only", laptop([](Inputs& in) {
             in.report =
                 DiagnosticReport(TimePoint{}, {Finding::make("volume.freeSpace", Severity::warning,
                                                              FindingSubject::volume("DATA"), "Data", "Low", "d")});
         })},
    };
}

// Dates in evidence are local time: pin the zone for the length of a test.
class UtcZone {
public:
    UtcZone() : saved_(std::getenv("TZ") ? std::optional<std::string>(std::getenv("TZ")) : std::nullopt) {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }
    ~UtcZone() {
        if (saved_)
            ::setenv("TZ", saved_->c_str(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }

private:
    std::optional<std::string> saved_;
};

TEST(HealthAssessment, EveryScenarioMatchesTheReviewedCopy) {
    UtcZone utc;
    Json rendered = Json::object();
    for (const auto& [name, inputs] : scenarios()) {
        const auto health = inputs.assess();
        std::vector<HealthDimension> order;
        for (const auto& assessment : health) order.push_back(assessment.dimension);
        const auto dimensions = allCases<HealthDimension>();
        EXPECT_EQ(order, std::vector(dimensions.begin(), dimensions.end())) << name;
        EXPECT_EQ(Json(health).get<std::vector<DimensionAssessment>>(), health) << name;
        rendered[name] = health;
    }
    testing::expectGolden("diagnostics/health.json", rendered);
}

TEST(HealthAssessment, AvailabilityMatchesVolumeIdsExactly) {
    const auto in = laptop();
    EXPECT_THAT(HealthAssessment::availability(in.snapshot, {ExpectedVolume{"data", "Data", "x"}}),
                ElementsAre(Field(&Finding::ruleID, "availability.missing")));
    EXPECT_THAT(HealthAssessment::availability(in.snapshot, {ExpectedVolume{"DATA", "Data", "x"}}), IsEmpty());
}

TEST(LinkSpeedText, DecimalUnitsWithOneDecimalAtMost) {
    const std::pair<std::int64_t, const char*> rows[] = {
        {480'000'000, "480 Mb/s"}, {5'000'000'000, "5 Gb/s"}, {2'500'000'000, "2.5 Gb/s"},
        {12'000'000, "12 Mb/s"},   {1'500'000, "1.5 Mb/s"},   {64'000, "64 kb/s"},
        {300, "300 b/s"},
    };
    for (const auto& [bitsPerSecond, text] : rows) EXPECT_EQ(linkSpeedText(bitsPerSecond), text) << bitsPerSecond;
}

TEST(VerificationDateText, AbbreviatedDateAndShortTime) {
    UtcZone utc;
    EXPECT_EQ(HealthAssessment::verificationDateText(*ISO8601::parse("2026-11-02T09:30:59Z")), "Nov 2, 2026 at 09:30");
    EXPECT_EQ(HealthAssessment::verificationDateText(*ISO8601::parse("2026-01-31T23:05:00Z")), "Jan 31, 2026 at 23:05");
}

}  // namespace
}  // namespace corvel
