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

// One row per boundary: the input, the rule, and its severity (none: the rule must not fire).
struct Row {
    const char* what;
    Findings findings;
    const char* ruleID;
    std::optional<Severity> severity;
};

const std::vector<Row>& rows() {
    using S = Severity;
    static const std::vector<Row> table{
        {"failing SMART", onDisk(smart(internalDisk(), SMARTStatus::failing)), "disk.smart", S::critical},
        {"internal SMART not supported", onDisk(smart(internalDisk(), SMARTStatus::notSupported)), "disk.smart", {}},
        {"external SMART not supported", onDisk(externalDisk()), "disk.smart", S::info},
        {"external verified", onDisk(smart(externalDisk(), SMARTStatus::verified)), "disk.smart", {}},
        {"external unknown", onDisk(smart(externalDisk(), SMARTStatus::unknown)), "disk.smart", {}},
        {"wear 79", onDisk(nvmeDisk(NVMe().used(79))), "disk.nvme.wear", {}},
        {"wear 80", onDisk(nvmeDisk(NVMe().used(80))), "disk.nvme.wear", S::warning},
        {"wear 99", onDisk(nvmeDisk(NVMe().used(99))), "disk.nvme.wear", S::warning},
        {"wear 100", onDisk(nvmeDisk(NVMe().used(100))), "disk.nvme.wear", S::critical},
        {"wear 50 of 50", onDisk(nvmeDisk(NVMe().used(50)), limits([](auto& t) { t.nvmeWearWarningPercent = 50; })),
         "disk.nvme.wear", S::warning},
        {"wear 49 of 50",
         onDisk(nvmeDisk(NVMe().used(49)), limits([](auto& t) { t.nvmeWearWarningPercent = 50; })),
         "disk.nvme.wear",
         {}},
        {"spare at threshold", onDisk(nvmeDisk(NVMe().spare(10).spareThreshold(10))), "disk.nvme.spare", S::critical},
        {"spare above threshold", onDisk(nvmeDisk(NVMe().spare(11).spareThreshold(10))), "disk.nvme.spare", {}},
        {"spare without threshold", onDisk(nvmeDisk(NVMe().spare(0))), "disk.nvme.spare", {}},
        {"threshold without spare", onDisk(nvmeDisk(NVMe().spareThreshold(10))), "disk.nvme.spare", {}},
        {"0 media errors", onDisk(nvmeDisk(NVMe().mediaErrors(0))), "disk.nvme.mediaErrors", {}},
        {"1 media error", onDisk(nvmeDisk(NVMe().mediaErrors(1))), "disk.nvme.mediaErrors", S::warning},
        {"69.9 \u00B0C", onDisk(nvmeDisk(NVMe().temperature(69.9))), "disk.nvme.temperature", {}},
        {"70 \u00B0C", onDisk(nvmeDisk(NVMe().temperature(70.0))), "disk.nvme.temperature", S::warning},
        {"NaN \u00B0C", onDisk(nvmeDisk(NVMe().temperature(nan))), "disk.nvme.temperature", {}},
        {"infinite \u00B0C",
         onDisk(nvmeDisk(NVMe().temperature(std::numeric_limits<double>::infinity()))),
         "disk.nvme.temperature",
         {}},

        // A small stick is judged by its free share alone.
        {"9.4 % of 32 GB", onVolume(sized(32 * GB, 3 * GB)), "volume.freeSpace", S::warning},
        {"4.7 % of 32 GB", onVolume(sized(32 * GB, 1'500'000'000)), "volume.freeSpace", S::critical},
        {"18.75 % of 32 GB", onVolume(sized(32 * GB, 6 * GB)), "volume.freeSpace", {}},
        {"exactly 15 %", onVolume(sized(100 * GB, 15 * GB)), "volume.freeSpace", {}},
        {"just below 15 %", onVolume(sized(100 * GB, 15 * GB - 1)), "volume.freeSpace", S::warning},
        // 0.25 is exact in binary, so these two rows see `<` against `<=` on each fraction.
        {"exactly the 25 % warning share",
         onVolume(sized(100 * GB, 25 * GB), limits([](auto& t) { t.warningFreeFraction = 0.25; })),
         "volume.freeSpace",
         {}},
        {"exactly the 25 % critical share", onVolume(sized(100 * GB, 25 * GB), limits([](auto& t) {
                                                         t.warningFreeFraction = 0.5;
                                                         t.criticalFreeFraction = 0.25;
                                                     })),
         "volume.freeSpace", S::warning},
        {"16 % of 1 TB", onVolume(sized(1000 * GB, 160 * GB)), "volume.freeSpace", {}},
        {"25 GB of 150 GB", onVolume(sized(150 * GB, 25 * GB)), "volume.freeSpace", S::warning},
        {"25 GB of exactly 4 x 30 GB", onVolume(sized(120 * GB, 25 * GB)), "volume.freeSpace", {}},
        {"25 GB of 4 x 30 GB + 1", onVolume(sized(120 * GB + 1, 25 * GB)), "volume.freeSpace", S::warning},
        {"9.9 GB of 60 GB", onVolume(sized(60 * GB, 9'900'000'000)), "volume.freeSpace", S::critical},
        {"10 GB of 60 GB", onVolume(sized(60 * GB, 10 * GB)), "volume.freeSpace", {}},
        {"no size", onVolume(sized(0, 0)), "volume.freeSpace", {}},
        {"negative size", onVolume(sized(-5, 0)), "volume.freeSpace", {}},
        {"more available than total", onVolume(sized(100 * GB, 200 * GB)), "volume.freeSpace", {}},
        {"overflowing used bytes", onVolume(sized(maxBytes, -1)), "volume.freeSpace", {}},
        {"overflowing byte limits",
         onVolume(sized(1000 * GB, 500 * GB), limits([](auto& t) {
                      t.warningFreeBytes = maxBytes;
                      t.criticalFreeBytes = maxBytes / 2;
                  })),
         "volume.freeSpace",
         {}},
        {"full read-only installer",
         onVolume(with(sized(16 * GB, 0), [](auto& v) { v.isReadOnly = true; })),
         "volume.freeSpace",
         {}},
        {"full read-only boot volume",
         onVolume(with(sized(16 * GB, 0),
                       [](auto& v) {
                           v.isReadOnly = true;
                           v.isBootVolume = true;
                       })),
         "volume.freeSpace", S::critical},

        {"read-only external", onVolume(with(externalVolume("B", "Backup"), [](auto& v) { v.isReadOnly = true; })),
         "volume.readOnly", S::warning},
        {"read-only boot",
         onVolume(with(externalVolume("B", "Backup"),
                       [](auto& v) {
                           v.isReadOnly = true;
                           v.isBootVolume = true;
                       })),
         "volume.readOnly",
         {}},
        {"read-only network",
         onVolume(with(externalVolume("B", "Backup"),
                       [](auto& v) {
                           v.isReadOnly = true;
                           v.isNetwork = true;
                       })),
         "volume.readOnly",
         {}},

        {"ExFAT", onVolume(with(externalVolume("E", "E"), [](auto& v) { v.fileSystemType = "ExFAT"; })),
         "volume.fileSystem", S::warning},
        {"fat32", onVolume(with(externalVolume("E", "E"), [](auto& v) { v.fileSystemType = "fat32"; })),
         "volume.fileSystem", S::warning},
        {"fusefs", onVolume(with(externalVolume("E", "E"), [](auto& v) { v.fileSystemType = "fusefs"; })),
         "volume.fileSystem", S::warning},
        {"read-only network ntfs",
         onVolume(with(externalVolume("E", "E"),
                       [](auto& v) {
                           v.fileSystemType = "ntfs";
                           v.isNetwork = true;
                           v.isReadOnly = true;
                       })),
         "volume.fileSystem", S::warning},
        {"exfat2",
         onVolume(with(externalVolume("E", "E"), [](auto& v) { v.fileSystemType = "exfat2"; })),
         "volume.fileSystem",
         {}},
        {"ext4",
         onVolume(with(externalVolume("E", "E"), [](auto& v) { v.fileSystemType = "ext4"; })),
         "volume.fileSystem",
         {}},
        {"no type",
         onVolume(with(externalVolume("E", "E"), [](auto& v) { v.fileSystemType.reset(); })),
         "volume.fileSystem",
         {}},

        {"ownership off", onVolume(with(externalVolume("O", "O"), [](auto& v) { v.ownershipEnabled = false; })),
         "volume.ownership", S::info},
        {"ownership unknown",
         onVolume(with(externalVolume("O", "O"), [](auto& v) { v.ownershipEnabled.reset(); })),
         "volume.ownership",
         {}},
        {"ownership off, internal",
         onVolume(with(externalVolume("O", "O"),
                       [](auto& v) {
                           v.ownershipEnabled = false;
                           v.isInternal = true;
                       })),
         "volume.ownership",
         {}},
        {"ownership off, network",
         onVolume(with(externalVolume("O", "O"),
                       [](auto& v) {
                           v.ownershipEnabled = false;
                           v.isNetwork = true;
                       })),
         "volume.ownership",
         {}},
        {"ownership off, read-only",
         onVolume(with(externalVolume("O", "O"),
                       [](auto& v) {
                           v.ownershipEnabled = false;
                           v.isReadOnly = true;
                       })),
         "volume.ownership",
         {}},

        {"unencrypted", onVolume(with(externalVolume("X", "X"), [](auto& v) { v.isEncrypted = false; })),
         "volume.encryption", S::info},
        {"unencrypted, read-only",
         onVolume(with(externalVolume("X", "X"),
                       [](auto& v) {
                           v.isEncrypted = false;
                           v.isReadOnly = true;
                       })),
         "volume.encryption", S::info},
        {"unencrypted, type APFS",
         onVolume(with(externalVolume("X", "X"),
                       [](auto& v) {
                           v.isEncrypted = false;
                           v.fileSystemType = "APFS";
                       })),
         "volume.encryption",
         {}},
        {"unencrypted, no type",
         onVolume(with(externalVolume("X", "X"),
                       [](auto& v) {
                           v.isEncrypted = false;
                           v.fileSystemType.reset();
                       })),
         "volume.encryption",
         {}},
        {"encryption unknown",
         onVolume(with(externalVolume("X", "X"), [](auto& v) { v.isEncrypted.reset(); })),
         "volume.encryption",
         {}},
        {"unencrypted, internal",
         onVolume(with(externalVolume("X", "X"),
                       [](auto& v) {
                           v.isEncrypted = false;
                           v.isInternal = true;
                       })),
         "volume.encryption",
         {}},
        {"unencrypted, network",
         onVolume(with(externalVolume("X", "X"),
                       [](auto& v) {
                           v.isEncrypted = false;
                           v.isNetwork = true;
                       })),
         "volume.encryption",
         {}},
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
    snapshot.volumes = {
        volume("D", "Data", 1000 * GB, 25 * GB),
        with(volume("R", "Macintosh HD", 1000 * GB, 100 * GB),
             [](auto& v) {
                 v.isBootVolume = true;
                 v.isReadOnly = true;
             }),
        with(externalVolume("B", "Backup"), [](auto& v) { v.isReadOnly = true; }),
        with(externalVolume("E", "SHARE"),
             [](auto& v) {
                 v.fileSystemType = "ExFAT";
                 v.fileSystemName = "ExFAT";
             }),
        with(externalVolume("M", "STICK"),
             [](auto& v) {
                 v.fileSystemType = "msdos";
                 v.fileSystemName.reset();
             }),
        with(externalVolume("O", "Work"), [](auto& v) { v.ownershipEnabled = false; }),
        with(externalVolume("X", "T7"), [](auto& v) { v.isEncrypted = false; }),
    };
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
