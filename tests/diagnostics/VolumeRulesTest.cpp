#include "DiagnosticsFixtures.h"
#include "diagnostics/DiagnosticEngine.h"

#include <gtest/gtest.h>

#include <limits>

namespace corvel {
namespace {

using testing::externalVolume;
using testing::GB;
using testing::NVMe;
using testing::volume;

std::optional<Finding> freeSpace(const StorageVolume& v, DiagnosticThresholds thresholds = {}) {
    return DiagnosticEngine(thresholds).freeSpaceFinding(v);
}

std::vector<std::string> ruleIDs(const StorageVolume& v) {
    std::vector<std::string> ids;
    for (const auto& f : DiagnosticEngine().volumeFindings(v)) ids.push_back(f.ruleID);
    return ids;
}

TEST(FreeSpaceRule, SmallStickIsJudgedByFractionAlone) {
    auto stick = volume("S", "STICK", 32 * GB, 3 * GB);  // 9.4 % free, far below the 30 GB byte limit
    auto warning = freeSpace(stick);
    ASSERT_TRUE(warning);
    EXPECT_EQ(warning->severity, Severity::warning);
    EXPECT_EQ(warning->title, "Running low on space");
    EXPECT_EQ(warning->dimension, HealthDimension::usage);

    stick.availableBytes = 1'500'000'000;  // 4.7 %
    auto critical = freeSpace(stick);
    ASSERT_TRUE(critical);
    EXPECT_EQ(critical->severity, Severity::critical);
    EXPECT_EQ(critical->title, "Almost out of space");

    stick.availableBytes = 6 * GB;  // 18.75 %: fine, although below both byte limits
    EXPECT_FALSE(freeSpace(stick));
}

TEST(FreeSpaceRule, LargeVolumeTextsAreExact) {
    auto data = volume("D", "Data", 1000 * GB, 25 * GB);  // 2.5 %
    data.isBootVolume = false;
    auto f = freeSpace(data);
    ASSERT_TRUE(f);
    EXPECT_EQ(f->ruleID, "volume.freeSpace");
    EXPECT_EQ(f->severity, Severity::critical);
    EXPECT_EQ(f->subject, FindingSubject::volume("D"));
    EXPECT_EQ(f->subjectName, "Data");
    EXPECT_EQ(f->detail,
              "Data has 25 GB free (3%). Builds, simulators, and updates fail unpredictably when space runs out.");
    EXPECT_EQ(f->recommendation, "Archive or move large folders to another drive.");
    EXPECT_EQ(f->evidence, "25 GB available of 1 TB (thresholds: warning < 15%, critical < 5%)");
    EXPECT_EQ(f->impact, "Writes fail once the volume fills; macOS also needs free space for swap and updates.");
}

TEST(FreeSpaceRule, BootVolumeGetsTheDeveloperStorageRecommendation) {
    auto root = volume("R", "Macintosh HD", 1000 * GB, 100 * GB);  // 10 %
    root.isBootVolume = true;
    root.isReadOnly = true;  // the sealed system volume still counts: it is the boot volume
    auto f = freeSpace(root);
    ASSERT_TRUE(f);
    EXPECT_EQ(f->severity, Severity::warning);
    EXPECT_EQ(f->recommendation,
              "Review Developer Storage for DerivedData, old simulators, and package caches you can clear.");
}

TEST(FreeSpaceRule, ByteLimitsApplyOnlyAboveFourTimesTheLimit) {
    // 16 % free is above both fractions; only the byte limits can fire.
    EXPECT_FALSE(freeSpace(volume("V", "V", 1000 * GB, 160 * GB)));

    // 150 GB total, 25 GB free (16.7 %): below 30 GB on a volume above 120 GB -> warning.
    auto byBytes = freeSpace(volume("V", "V", 150 * GB, 25 * GB));
    ASSERT_TRUE(byBytes);
    EXPECT_EQ(byBytes->severity, Severity::warning);

    // Exactly 4 x 30 GB is not "larger than", so the byte limit does not apply.
    EXPECT_FALSE(freeSpace(volume("V", "V", 120 * GB, 25 * GB)));
    // One byte more and it does.
    EXPECT_TRUE(freeSpace(volume("V", "V", 120 * GB + 1, 25 * GB)));

    // 9 GB free of 200 GB (4.5 %) is critical by fraction; 9 GB of 300 GB (3 %) too; 9.9 GB of 60 GB
    // (16.5 %) is critical by bytes since 60 GB > 40 GB.
    auto criticalByBytes = freeSpace(volume("V", "V", 60 * GB, 9'900'000'000));
    ASSERT_TRUE(criticalByBytes);
    EXPECT_EQ(criticalByBytes->severity, Severity::critical);
    // At the limit itself it is not below it.
    EXPECT_FALSE(freeSpace(volume("V", "V", 60 * GB, 10 * GB)));
}

TEST(FreeSpaceRule, FractionBoundaryIsStrict) {
    EXPECT_FALSE(freeSpace(volume("V", "V", 100 * GB, 15 * GB)));  // exactly 15 %: not below
    auto below = freeSpace(volume("V", "V", 100 * GB, 15 * GB - 1));
    ASSERT_TRUE(below);
    EXPECT_EQ(below->severity, Severity::warning);
}

TEST(FreeSpaceRule, NoFindingWithoutSizeOrOnReadOnlyNonBootVolumes) {
    EXPECT_FALSE(freeSpace(volume("V", "V", 0, 0)));
    EXPECT_FALSE(freeSpace(volume("V", "V", -5, 0)));
    auto readOnly = volume("V", "Installer", 16 * GB, 0);
    readOnly.isReadOnly = true;
    EXPECT_FALSE(freeSpace(readOnly));
}

TEST(FreeSpaceRule, AvailableAboveTotalCountsAsAllFree) {
    EXPECT_FALSE(freeSpace(volume("V", "V", 100 * GB, 200 * GB)));
}

TEST(FreeSpaceRule, OverflowingInputMakesTheRuleNotFire) {
    EXPECT_FALSE(freeSpace(volume("V", "V", std::numeric_limits<std::int64_t>::max(), -1)));
    DiagnosticThresholds huge;
    huge.warningFreeBytes = std::numeric_limits<std::int64_t>::max();
    huge.criticalFreeBytes = std::numeric_limits<std::int64_t>::max() / 2;
    EXPECT_FALSE(freeSpace(volume("V", "V", 1000 * GB, 500 * GB), huge));
}

TEST(FreeSpaceRule, ThresholdPercentagesAreTruncatedInEvidence) {
    DiagnosticThresholds custom;
    custom.warningFreeFraction = 0.259;
    custom.criticalFreeFraction = 0.101;
    auto f = freeSpace(volume("V", "V", 100 * GB, 20 * GB), custom);
    ASSERT_TRUE(f);
    EXPECT_EQ(f->evidence, "20 GB available of 100 GB (thresholds: warning < 25%, critical < 10%)");
}

TEST(ReadOnlyRule, WarnsForWritableLookingVolumesOnly) {
    auto v = externalVolume("B", "Backup");
    v.isReadOnly = true;
    v.mountPoint = "/Volumes/Backup";
    const auto findings = DiagnosticEngine().volumeFindings(v);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].ruleID, "volume.readOnly");
    EXPECT_EQ(findings[0].severity, Severity::warning);
    EXPECT_EQ(findings[0].dimension, HealthDimension::fileSystem);
    EXPECT_EQ(findings[0].title, "Mounted read-only");
    EXPECT_EQ(findings[0].detail, "Backup is mounted read-only, so builds and tools can't write to it.");
    EXPECT_EQ(findings[0].recommendation,
              "Check the file system format and run First Aid in Disk Utility if this is unexpected.");
    EXPECT_EQ(findings[0].evidence, "URLResourceValues.volumeIsReadOnly = true for /Volumes/Backup");
    EXPECT_EQ(findings[0].impact, "Nothing can be saved to this volume.");

    auto boot = v;
    boot.isBootVolume = true;
    EXPECT_TRUE(ruleIDs(boot).empty());
    auto network = v;
    network.isNetwork = true;
    EXPECT_TRUE(ruleIDs(network).empty());
}

TEST(FileSystemRule, NonNativeTypesAnyCaseWithNameOrUpperCasedType) {
    auto v = externalVolume("E", "SHARE");
    v.fileSystemType = "ExFAT";
    v.fileSystemName = "ExFAT";
    const auto findings = DiagnosticEngine().volumeFindings(v);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].ruleID, "volume.fileSystem");
    EXPECT_EQ(findings[0].severity, Severity::warning);
    EXPECT_EQ(findings[0].title, "ExFAT isn't suited to development");
    EXPECT_EQ(findings[0].detail,
              "ExFAT lacks POSIX permissions, symlinks, and reliable metadata, which breaks git checkouts, Xcode "
              "builds, and package managers.");
    EXPECT_EQ(findings[0].recommendation,
              "Use APFS for repositories and build output; keep ExFAT only for cross-platform file exchange.");
    EXPECT_EQ(findings[0].evidence, "File system type = exfat");
    EXPECT_EQ(findings[0].impact, "Repositories and toolchains can break in subtle ways.");

    v.fileSystemType = "msdos";
    v.fileSystemName.reset();
    EXPECT_EQ(DiagnosticEngine().volumeFindings(v).at(0).title, "MSDOS isn't suited to development");

    for (const char* type : {"fat32", "ntfs", "fusefs"}) {
        v.fileSystemType = type;
        EXPECT_EQ(ruleIDs(v), std::vector<std::string>{"volume.fileSystem"}) << type;
    }
    for (const char* type : {"apfs", "hfs", "ext4", "exfat2"}) {
        v.fileSystemType = type;
        EXPECT_TRUE(ruleIDs(v).empty()) << type;
    }
    v.fileSystemType.reset();
    EXPECT_TRUE(ruleIDs(v).empty());
}

TEST(FileSystemRule, AppliesToReadOnlyAndNetworkVolumesToo) {
    auto v = externalVolume("N", "NAS");
    v.fileSystemType = "ntfs";
    v.isNetwork = true;
    v.isReadOnly = true;
    EXPECT_EQ(ruleIDs(v), std::vector<std::string>{"volume.fileSystem"});
}

TEST(OwnershipRule, InfoOnWritableExternalLocalVolumesWithOwnershipOff) {
    auto v = externalVolume("O", "Work");
    v.ownershipEnabled = false;
    const auto findings = DiagnosticEngine().volumeFindings(v);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].ruleID, "volume.ownership");
    EXPECT_EQ(findings[0].severity, Severity::info);
    EXPECT_EQ(findings[0].title, "Ownership is ignored on this volume");
    EXPECT_EQ(findings[0].detail,
              "Files appear owned by the current user and permission bits aren't enforced. Tools that check "
              "permissions (ssh keys, some installers) may behave differently.");
    EXPECT_EQ(findings[0].recommendation,
              "Usually fine for a personal dev drive; uncheck \u201CIgnore ownership\u201D in Finder \u203A Get Info "
              "if you need strict permissions.");
    EXPECT_EQ(findings[0].evidence, "diskutil info: GlobalPermissionsEnabled = false");
    EXPECT_EQ(findings[0].impact, "Permission-sensitive tools may behave differently.");

    auto unknown = v;
    unknown.ownershipEnabled.reset();
    EXPECT_TRUE(ruleIDs(unknown).empty());
    auto internal = v;
    internal.isInternal = true;
    EXPECT_TRUE(ruleIDs(internal).empty());
    auto network = v;
    network.isNetwork = true;
    EXPECT_TRUE(ruleIDs(network).empty());
    auto readOnly = v;
    readOnly.isReadOnly = true;
    EXPECT_EQ(ruleIDs(readOnly), std::vector<std::string>{"volume.readOnly"});
}

TEST(EncryptionRule, InfoOnExternalApfsVolumesKnownUnencrypted) {
    auto v = externalVolume("X", "T7");
    v.isEncrypted = false;
    const auto findings = DiagnosticEngine().volumeFindings(v);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].ruleID, "volume.encryption");
    EXPECT_EQ(findings[0].severity, Severity::info);
    EXPECT_EQ(findings[0].title, "External volume is not encrypted");
    EXPECT_EQ(findings[0].detail,
              "Source code, credentials, and caches on T7 are readable by anyone who connects the drive.");
    EXPECT_EQ(findings[0].recommendation,
              "Consider encrypting it from Finder (right-click \u203A Encrypt) once you have a backup.");
    EXPECT_EQ(findings[0].evidence, "diskutil info: Encryption = false");
    EXPECT_EQ(findings[0].impact, "A lost or stolen drive exposes its contents.");

    auto readOnly = v;  // read-only volumes are not excluded from this rule
    readOnly.isReadOnly = true;
    EXPECT_EQ(ruleIDs(readOnly), (std::vector<std::string>{"volume.readOnly", "volume.encryption"}));

    auto upperCase = v;  // the type must be exactly "apfs"
    upperCase.fileSystemType = "APFS";
    EXPECT_TRUE(ruleIDs(upperCase).empty());
    auto noType = v;
    noType.fileSystemType.reset();
    EXPECT_TRUE(ruleIDs(noType).empty());
    auto unknown = v;
    unknown.isEncrypted.reset();
    EXPECT_TRUE(ruleIDs(unknown).empty());
    auto internal = v;
    internal.isInternal = true;
    EXPECT_TRUE(ruleIDs(internal).empty());
}

TEST(VolumeRules, FireInDocumentedOrder) {
    auto v = externalVolume("A", "Mess");
    v.totalBytes = 32 * GB;
    v.availableBytes = 1 * GB;
    v.fileSystemType = "exfat";
    v.fileSystemName.reset();
    v.ownershipEnabled = false;
    EXPECT_EQ(ruleIDs(v), (std::vector<std::string>{"volume.freeSpace", "volume.fileSystem", "volume.ownership"}));
}

TEST(Evaluate, EmptySnapshotGivesEmptyReportDatedAtCapture) {
    StorageSnapshot snapshot;
    snapshot.capturedAt = *ISO8601::parse("2026-11-02T09:30:00Z");
    const auto report = DiagnosticEngine().evaluate(snapshot);
    EXPECT_TRUE(report.findings.empty());
    EXPECT_EQ(report.generatedAt, snapshot.capturedAt);
    EXPECT_EQ(report.overallSeverity(), Severity::ok);
    EXPECT_EQ(report.healthScore(), 100);
}

TEST(Evaluate, CollectsDisksAndVolumesIntoReportOrder) {
    StorageSnapshot snapshot;
    auto alpha = testing::internalDisk("disk0", "Alpha Media");
    alpha.nvme = NVMe().temperature(75.0).mediaErrors(2);
    snapshot.disks.push_back(alpha);
    snapshot.volumes.push_back(volume("Z", "Zeta", 100 * GB, 2 * GB));
    const auto report = DiagnosticEngine().evaluate(snapshot);
    std::vector<std::string> ids;
    for (const auto& f : report.findings) ids.push_back(f.id());
    EXPECT_EQ(ids, (std::vector<std::string>{"volume.freeSpace|volume:Z", "disk.nvme.mediaErrors|disk:disk0",
                                             "disk.nvme.temperature|disk:disk0"}));
    EXPECT_EQ(report.healthScore(), 50);
}

TEST(Evaluate, UsesTheEngineThresholds) {
    StorageSnapshot snapshot;
    snapshot.volumes.push_back(volume("V", "V", 100 * GB, 20 * GB));  // 20 % free
    EXPECT_TRUE(DiagnosticEngine().evaluate(snapshot).findings.empty());
    DiagnosticEngine engine;
    engine.thresholds.warningFreeFraction = 0.25;
    EXPECT_EQ(engine.evaluate(snapshot).findings.size(), 1u);
}

}  // namespace
}  // namespace corvel
