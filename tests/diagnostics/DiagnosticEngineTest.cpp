#include "DiagnosticsFixtures.h"
#include "diagnostics/DiagnosticEngine.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using testing::externalDisk;
using testing::externalVolume;
using ::testing::Field;
using testing::GB;
using testing::internalDisk;
using ::testing::IsEmpty;
using testing::NVMe;
using testing::nvmeDisk;
using testing::volume;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr std::int64_t maxBytes = std::numeric_limits<std::int64_t>::max();

template <class T, class Change>
T with(T value, Change change) {
    change(value);
    return value;
}

DiagnosticThresholds limits(std::function<void(DiagnosticThresholds&)> change) {
    return with(DiagnosticThresholds::standard(), change);
}

using Findings = std::function<std::vector<Finding>()>;

Findings onDisk(PhysicalDisk disk, DiagnosticThresholds thresholds = DiagnosticThresholds::standard()) {
    return [=] { return DiagnosticEngine(thresholds).diskFindings(disk); };
}

Findings onVolume(StorageVolume v, DiagnosticThresholds thresholds = DiagnosticThresholds::standard()) {
    return [=] { return DiagnosticEngine(thresholds).volumeFindings(v); };
}

PhysicalDisk smart(PhysicalDisk disk, SMARTStatus status) {
    disk.smartStatus = status;
    return disk;
}

StorageVolume sized(std::int64_t total, std::int64_t available) {
    return volume("V", "V", total, available);
}

// A volume changed only where a row says: ext().readOnly().network()
struct Vol {
    StorageVolume v;
    Vol& readOnly() { return set(v.isReadOnly, true); }
    Vol& boot() { return set(v.isBootVolume, true); }
    Vol& network() { return set(v.isNetwork, true); }
    Vol& internal() { return set(v.isInternal, true); }
    Vol& type(std::optional<std::string> type) { return set(v.fileSystemType, std::move(type)); }
    Vol& fileSystemName(std::optional<std::string> name) { return set(v.fileSystemName, std::move(name)); }
    Vol& ownership(std::optional<bool> on) { return set(v.ownershipEnabled, on); }
    Vol& encrypted(std::optional<bool> on) { return set(v.isEncrypted, on); }
    operator StorageVolume() const { return v; }

private:
    template <class Field, class Value>
    Vol& set(Field& field, Value value) {
        field = std::move(value);
        return *this;
    }
};

Vol ext() {
    return {externalVolume("E", "E")};
}

// One row per boundary: the input, the rule, and its severity (none: the rule must not fire).
struct Row {
    const char* what;
    Findings findings;
    const char* ruleID;
    std::optional<Severity> severity;
};

const std::vector<Row>& rows() {
    using S = Severity;
    constexpr std::optional<Severity> none;
    const auto wearAt50 = limits([](auto& t) { t.nvmeWearWarningPercent = 50; });
    static const std::vector<Row> table{
        {"failing SMART", onDisk(smart(internalDisk(), SMARTStatus::failing)), "disk.smart", S::critical},
        {"internal SMART not supported", onDisk(smart(internalDisk(), SMARTStatus::notSupported)), "disk.smart", none},
        {"external SMART not supported", onDisk(externalDisk()), "disk.smart", S::info},
        {"external verified", onDisk(smart(externalDisk(), SMARTStatus::verified)), "disk.smart", none},
        {"external unknown", onDisk(smart(externalDisk(), SMARTStatus::unknown)), "disk.smart", none},
        {"wear 79", onDisk(nvmeDisk(NVMe().used(79))), "disk.nvme.wear", none},
        {"wear 80", onDisk(nvmeDisk(NVMe().used(80))), "disk.nvme.wear", S::warning},
        {"wear 99", onDisk(nvmeDisk(NVMe().used(99))), "disk.nvme.wear", S::warning},
        {"wear 100", onDisk(nvmeDisk(NVMe().used(100))), "disk.nvme.wear", S::critical},
        {"wear 50 of 50", onDisk(nvmeDisk(NVMe().used(50)), wearAt50), "disk.nvme.wear", S::warning},
        {"wear 49 of 50", onDisk(nvmeDisk(NVMe().used(49)), wearAt50), "disk.nvme.wear", none},
        {"spare at threshold", onDisk(nvmeDisk(NVMe().spare(10).spareThreshold(10))), "disk.nvme.spare", S::critical},
        {"spare above threshold", onDisk(nvmeDisk(NVMe().spare(11).spareThreshold(10))), "disk.nvme.spare", none},
        {"spare without threshold", onDisk(nvmeDisk(NVMe().spare(0))), "disk.nvme.spare", none},
        {"threshold without spare", onDisk(nvmeDisk(NVMe().spareThreshold(10))), "disk.nvme.spare", none},
        {"0 media errors", onDisk(nvmeDisk(NVMe().mediaErrors(0))), "disk.nvme.mediaErrors", none},
        {"1 media error", onDisk(nvmeDisk(NVMe().mediaErrors(1))), "disk.nvme.mediaErrors", S::warning},
        {"69.9 \u00B0C", onDisk(nvmeDisk(NVMe().temperature(69.9))), "disk.nvme.temperature", none},
        {"70 \u00B0C", onDisk(nvmeDisk(NVMe().temperature(70.0))), "disk.nvme.temperature", S::warning},
        {"NaN \u00B0C", onDisk(nvmeDisk(NVMe().temperature(nan))), "disk.nvme.temperature", none},
        {"infinite \u00B0C", onDisk(nvmeDisk(NVMe().temperature(inf))), "disk.nvme.temperature", none},

        // A small stick is judged by its free share alone.
        {"9.4 % of 32 GB", onVolume(sized(32 * GB, 3 * GB)), "volume.freeSpace", S::warning},
        {"4.7 % of 32 GB", onVolume(sized(32 * GB, 1'500'000'000)), "volume.freeSpace", S::critical},
        {"18.75 % of 32 GB", onVolume(sized(32 * GB, 6 * GB)), "volume.freeSpace", none},
        {"exactly 15 %", onVolume(sized(100 * GB, 15 * GB)), "volume.freeSpace", none},
        {"just below 15 %", onVolume(sized(100 * GB, 15 * GB - 1)), "volume.freeSpace", S::warning},
        // 0.25 is exact in binary, so these two rows see `<` against `<=` on each fraction.
        {"exactly the 25 % warning share",
         onVolume(sized(100 * GB, 25 * GB), limits([](auto& t) { t.warningFreeFraction = 0.25; })), "volume.freeSpace",
         none},
        {"exactly the 25 % critical share", onVolume(sized(100 * GB, 25 * GB), limits([](auto& t) {
                                                         t = {.warningFreeFraction = 0.5, .criticalFreeFraction = 0.25};
                                                     })),
         "volume.freeSpace", S::warning},
        {"16 % of 1 TB", onVolume(sized(1000 * GB, 160 * GB)), "volume.freeSpace", none},
        {"25 GB of 150 GB", onVolume(sized(150 * GB, 25 * GB)), "volume.freeSpace", S::warning},
        {"25 GB of exactly 4 x 30 GB", onVolume(sized(120 * GB, 25 * GB)), "volume.freeSpace", none},
        {"25 GB of 4 x 30 GB + 1", onVolume(sized(120 * GB + 1, 25 * GB)), "volume.freeSpace", S::warning},
        {"9.9 GB of 60 GB", onVolume(sized(60 * GB, 9'900'000'000)), "volume.freeSpace", S::critical},
        {"10 GB of 60 GB", onVolume(sized(60 * GB, 10 * GB)), "volume.freeSpace", none},
        {"no size", onVolume(sized(0, 0)), "volume.freeSpace", none},
        {"negative size", onVolume(sized(-5, 0)), "volume.freeSpace", none},
        {"more available than total", onVolume(sized(100 * GB, 200 * GB)), "volume.freeSpace", none},
        {"overflowing used bytes", onVolume(sized(maxBytes, -1)), "volume.freeSpace", none},
        {"overflowing byte limits", onVolume(sized(1000 * GB, 500 * GB), limits([](auto& t) {
                                                 t.warningFreeBytes = maxBytes;
                                                 t.criticalFreeBytes = maxBytes / 2;
                                             })),
         "volume.freeSpace", none},
        {"full read-only installer", onVolume(Vol{sized(16 * GB, 0)}.readOnly()), "volume.freeSpace", none},
        {"full read-only boot volume", onVolume(Vol{sized(16 * GB, 0)}.readOnly().boot()), "volume.freeSpace",
         S::critical},

        {"read-only external", onVolume(ext().readOnly()), "volume.readOnly", S::warning},
        {"read-only boot", onVolume(ext().readOnly().boot()), "volume.readOnly", none},
        {"read-only network", onVolume(ext().readOnly().network()), "volume.readOnly", none},

        {"ExFAT", onVolume(ext().type("ExFAT")), "volume.fileSystem", S::warning},
        {"fat32", onVolume(ext().type("fat32")), "volume.fileSystem", S::warning},
        {"fusefs", onVolume(ext().type("fusefs")), "volume.fileSystem", S::warning},
        {"read-only network ntfs", onVolume(ext().type("ntfs").network().readOnly()), "volume.fileSystem", S::warning},
        {"exfat2", onVolume(ext().type("exfat2")), "volume.fileSystem", none},
        {"ext4", onVolume(ext().type("ext4")), "volume.fileSystem", none},
        {"no type", onVolume(ext().type(std::nullopt)), "volume.fileSystem", none},

        {"ownership off", onVolume(ext().ownership(false)), "volume.ownership", S::info},
        {"ownership unknown", onVolume(ext().ownership(std::nullopt)), "volume.ownership", none},
        {"ownership off, internal", onVolume(ext().ownership(false).internal()), "volume.ownership", none},
        {"ownership off, network", onVolume(ext().ownership(false).network()), "volume.ownership", none},
        {"ownership off, read-only", onVolume(ext().ownership(false).readOnly()), "volume.ownership", none},

        {"unencrypted", onVolume(ext().encrypted(false)), "volume.encryption", S::info},
        {"unencrypted, read-only", onVolume(ext().encrypted(false).readOnly()), "volume.encryption", S::info},
        {"unencrypted, type APFS", onVolume(ext().encrypted(false).type("APFS")), "volume.encryption", none},
        {"unencrypted, no type", onVolume(ext().encrypted(false).type(std::nullopt)), "volume.encryption", none},
        {"encryption unknown", onVolume(ext().encrypted(std::nullopt)), "volume.encryption", none},
        {"unencrypted, internal", onVolume(ext().encrypted(false).internal()), "volume.encryption", none},
        {"unencrypted, network", onVolume(ext().encrypted(false).network()), "volume.encryption", none},
    };
    return table;
}

TEST(DiagnosticRules, FireAtTheirBoundariesWithTheirSeverity) {
    for (const auto& row : rows()) {
        std::vector<Severity> fired;
        for (const auto& f : row.findings())
            if (f.ruleID == row.ruleID) fired.push_back(f.severity);
        if (row.severity)
            EXPECT_THAT(fired, ElementsAre(*row.severity)) << row.what;
        else
            EXPECT_THAT(fired, IsEmpty()) << row.what;
    }
}

TEST(DiagnosticRules, HealthyDisksAndVolumesGiveNothing) {
    EXPECT_THAT(DiagnosticEngine().diskFindings(internalDisk()), IsEmpty());
    EXPECT_THAT(DiagnosticEngine().diskFindings(nvmeDisk(NVMe())), IsEmpty());
    EXPECT_THAT(DiagnosticEngine().volumeFindings(volume("V", "V", 1000 * GB, 600 * GB)), IsEmpty());
}

std::vector<std::string> ruleIDs(const std::vector<Finding>& findings) {
    std::vector<std::string> ids;
    for (const auto& f : findings) ids.push_back(f.ruleID);
    return ids;
}

TEST(DiagnosticRules, KeepTheirOrder) {
    auto disk = nvmeDisk(NVMe().used(100).spare(1).spareThreshold(5).temperature(80.0).mediaErrors(3));
    disk.smartStatus = SMARTStatus::failing;
    EXPECT_THAT(ruleIDs(DiagnosticEngine().diskFindings(disk)),
                ElementsAre("disk.smart", "disk.nvme.wear", "disk.nvme.spare", "disk.nvme.mediaErrors",
                            "disk.nvme.temperature"));
    auto v = externalVolume("A", "Mess");
    v.availableBytes = 1 * GB;
    v.fileSystemType = "exfat";
    v.ownershipEnabled = false;
    EXPECT_THAT(ruleIDs(DiagnosticEngine().volumeFindings(v)),
                ElementsAre("volume.freeSpace", "volume.fileSystem", "volume.ownership"));
}

TEST(DiagnosticEngineEvaluate, DatesTheReportAtCaptureAndUsesItsThresholds) {
    StorageSnapshot snapshot;
    snapshot.capturedAt = *ISO8601::parse("2026-11-02T09:30:00Z");
    EXPECT_EQ(DiagnosticEngine().evaluate(snapshot).generatedAt, snapshot.capturedAt);
    snapshot.volumes.push_back(volume("V", "V", 100 * GB, 20 * GB));  // 20 % free
    EXPECT_THAT(DiagnosticEngine().evaluate(snapshot).findings, IsEmpty());
    const auto raised = DiagnosticEngine(limits([](auto& t) { t.warningFreeFraction = 0.25; })).evaluate(snapshot);
    EXPECT_THAT(raised.findings, ElementsAre(Field(&Finding::ruleID, "volume.freeSpace")));
}

// Every rule fires at least once below: the golden file holds each finding's texts, subject and
// dimension, in report order.
TEST(DiagnosticEngineEvaluate, EveryFindingTextMatchesTheReviewedCopy) {
    StorageSnapshot snapshot;
    snapshot.disks = {smart(internalDisk("disk0"), SMARTStatus::failing), externalDisk("disk4", "Samsung T7 Media"),
                      with(externalDisk("disk7", ""), [](auto& d) { d.busProtocol.reset(); })};
    auto worn = nvmeDisk(NVMe().used(140).spare(10).spareThreshold(10).mediaErrors(1).temperature(72.5));
    worn.id = "disk2";
    auto hot = nvmeDisk(NVMe().used(80).mediaErrors(2).temperature(70.4));
    hot.id = "disk3";
    snapshot.disks.push_back(worn);
    snapshot.disks.push_back(hot);
    const auto external = [](const char* id, const char* name) { return Vol{externalVolume(id, name)}; };
    snapshot.volumes = {volume("D", "Data", 1000 * GB, 25 * GB),
                        Vol{volume("R", "Macintosh HD", 1000 * GB, 100 * GB)}.boot().readOnly(),
                        external("B", "Backup").readOnly(),
                        external("E", "SHARE").type("ExFAT").fileSystemName("ExFAT"),
                        external("M", "STICK").type("msdos").fileSystemName(std::nullopt),
                        external("O", "Work").ownership(false),
                        external("X", "T7").encrypted(false)};
    Json rendered = Json::object();
    rendered["report"] = DiagnosticEngine().evaluate(snapshot).findings;
    // Threshold percentages in the evidence are truncated, not rounded.
    rendered["custom thresholds"] = *DiagnosticEngine(limits([](auto& t) {
                                         t.warningFreeFraction = 0.259;
                                         t.criticalFreeFraction = 0.101;
                                     })).freeSpaceFinding(volume("V", "V", 100 * GB, 20 * GB));
    testing::expectGolden("diagnostics/findings.json", rendered);
}

}  // namespace
}  // namespace corvel
