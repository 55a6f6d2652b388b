#include "diagnostics/DiagnosticEngine.h"

#include "common/ByteFormat.h"
#include "common/Text.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <limits>
#include <string>
#include <string_view>

namespace corvel {

namespace {

// Rounds half away from zero; absent for values that no integer can hold (NaN, infinities, or
// absurd magnitudes), so that the rule asking for it simply does not fire.
std::optional<long long> roundedInteger(double value) {
    if (!std::isfinite(value) || std::fabs(value) > 9.0e15) return std::nullopt;
    return std::llround(value);
}

// Truncates toward zero with the same guard.
std::optional<long long> truncatedInteger(double value) {
    if (!std::isfinite(value) || std::fabs(value) > 9.0e15) return std::nullopt;
    return static_cast<long long>(value);
}

// True when `bytes` is below `limit` on a volume bigger than four times that limit. Byte limits
// only make sense on large volumes; a small stick is judged by its free share alone. A limit so
// large that four times it overflows can never be exceeded by a real volume.
bool belowByteLimit(std::int64_t available, std::int64_t total, std::int64_t limit) {
    std::int64_t fourTimes = 0;
    if (__builtin_mul_overflow(limit, std::int64_t{4}, &fourTimes)) return false;
    return available < limit && total > fourTimes;
}

bool isNonNativeFileSystem(std::string_view lowerType) {
    static constexpr std::array<std::string_view, 5> types{"exfat", "msdos", "fat32", "ntfs", "fusefs"};
    for (auto type : types)
        if (lowerType == type) return true;
    return false;
}

}  // namespace

DiagnosticReport DiagnosticEngine::evaluate(const StorageSnapshot& snapshot) const {
    std::vector<Finding> findings;
    for (const auto& disk : snapshot.disks) {
        auto found = diskFindings(disk);
        findings.insert(findings.end(), found.begin(), found.end());
    }
    for (const auto& volume : snapshot.volumes) {
        auto found = volumeFindings(volume);
        findings.insert(findings.end(), found.begin(), found.end());
    }
    return DiagnosticReport(snapshot.capturedAt, std::move(findings));
}

std::vector<Finding> DiagnosticEngine::diskFindings(const PhysicalDisk& disk) const {
    std::vector<Finding> findings;
    const auto subject = FindingSubject::disk(disk.id);
    const std::string name = disk.displayName();

    if (disk.smartStatus == SMARTStatus::failing) {
        findings.push_back(Finding::make(
            "disk.smart", Severity::critical, subject, name, "SMART reports the drive is failing",
            name + " reported a failing SMART status. Data loss may be imminent.",
            "Back up this drive immediately and plan a replacement.",
            "diskutil info " + disk.id + ": SMARTStatus = Failing", "The drive may stop working or return corrupt data."));
    } else if (disk.smartStatus == SMARTStatus::notSupported && !disk.isInternal) {
        // An empty protocol text says no more than an absent one.
        const std::string bus =
            disk.busProtocol && !disk.busProtocol->empty() ? *disk.busProtocol : std::string("external");
        findings.push_back(Finding::make(
            "disk.smart", Severity::info, subject, name, "SMART health is not visible",
            "The " + bus + " bridge for " + name + " does not pass SMART data to macOS, so drive wear can't be monitored.",
            "Keep regular backups; consider an enclosure with SMART pass-through for critical data.",
            "diskutil info " + disk.id + ": SMARTStatus = Not Supported", "Physical health is unknown, not proven good."));
    }

    if (!disk.nvme) return findings;
    const auto& nvme = *disk.nvme;

    if (nvme.percentageUsed && *nvme.percentageUsed >= thresholds.nvmeWearWarningPercent) {
        const auto used = *nvme.percentageUsed;
        findings.push_back(Finding::make(
            "disk.nvme.wear", used >= 100 ? Severity::critical : Severity::warning, subject, name,
            fmt::format("SSD endurance {}% consumed", used),
            fmt::format("{} has used {}% of its rated write endurance.", name, used),
            "Move heavy build caches (DerivedData, simulators) to an external SSD and plan a replacement.",
            fmt::format("NVMe health log PERCENTAGE_USED = {}", used),
            "Worn flash loses write endurance and eventually goes read-only."));
    }

    if (nvme.availableSpare && nvme.availableSpareThreshold && *nvme.availableSpare <= *nvme.availableSpareThreshold) {
        const auto spare = *nvme.availableSpare;
        const auto threshold = *nvme.availableSpareThreshold;
        findings.push_back(Finding::make(
            "disk.nvme.spare", Severity::critical, subject, name, "Spare capacity below threshold",
            fmt::format("Available spare is {}% (threshold {}%).", spare, threshold),
            "Back up now; the controller is running out of replacement blocks.",
            fmt::format("NVMe AVAILABLE_SPARE = {}, AVAILABLE_SPARE_THRESHOLD = {}", spare, threshold),
            "The drive can switch to read-only mode without warning."));
    }

    if (nvme.mediaErrors && *nvme.mediaErrors >= 1) {
        const auto errors = *nvme.mediaErrors;
        findings.push_back(Finding::make(
            "disk.nvme.mediaErrors", Severity::warning, subject, name,
            fmt::format("{} media error{} recorded", errors, errors == 1 ? "" : "s"),
            "The controller has logged unrecovered data integrity errors.",
            "Verify backups and watch whether the count keeps rising.", fmt::format("NVMe MEDIA_ERRORS = {}", errors),
            "Some data may already be unreadable."));
    }

    if (nvme.temperatureCelsius && *nvme.temperatureCelsius >= thresholds.temperatureWarningCelsius) {
        // The comparison uses the measured value; only the text shows it rounded.
        if (const auto rounded = roundedInteger(*nvme.temperatureCelsius)) {
            findings.push_back(Finding::make(
                "disk.nvme.temperature", Severity::warning, subject, name,
                fmt::format("Drive running hot ({} \u00B0C)", *rounded),
                "Sustained high temperatures throttle performance and shorten SSD life.",
                "Improve airflow or pause heavy parallel builds.",
                fmt::format("NVMe TEMPERATURE = {} \u00B0C", *rounded), "Thermal throttling slows I/O."));
        }
    }
    return findings;
}

std::vector<Finding> DiagnosticEngine::volumeFindings(const StorageVolume& volume) const {
    std::vector<Finding> findings;
    const auto subject = FindingSubject::volume(volume.id);
    const std::string& name = volume.name;

    if (auto freeSpace = freeSpaceFinding(volume)) findings.push_back(std::move(*freeSpace));

    if (volume.isReadOnly && !volume.isBootVolume && !volume.isNetwork) {
        findings.push_back(Finding::make(
            "volume.readOnly", Severity::warning, subject, name, "Mounted read-only",
            name + " is mounted read-only, so builds and tools can't write to it.",
            "Check the file system format and run First Aid in Disk Utility if this is unexpected.",
            "URLResourceValues.volumeIsReadOnly = true for " + volume.mountPoint, "Nothing can be saved to this volume."));
    }

    if (volume.fileSystemType) {
        const std::string type = toLower(*volume.fileSystemType);
        if (isNonNativeFileSystem(type)) {
            const std::string format = volume.fileSystemName ? *volume.fileSystemName : toUpper(*volume.fileSystemType);
            findings.push_back(Finding::make(
                "volume.fileSystem", Severity::warning, subject, name, format + " isn't suited to development",
                format +
                    " lacks POSIX permissions, symlinks, and reliable metadata, which breaks git checkouts, Xcode "
                    "builds, and package managers.",
                "Use APFS for repositories and build output; keep " + format + " only for cross-platform file exchange.",
                "File system type = " + type, "Repositories and toolchains can break in subtle ways."));
        }
    }

    if (volume.ownershipEnabled == false && !volume.isInternal && !volume.isReadOnly && !volume.isNetwork) {
        findings.push_back(Finding::make(
            "volume.ownership", Severity::info, subject, name, "Ownership is ignored on this volume",
            "Files appear owned by the current user and permission bits aren't enforced. Tools that check "
            "permissions (ssh keys, some installers) may behave differently.",
            "Usually fine for a personal dev drive; uncheck \u201CIgnore ownership\u201D in Finder \u203A Get Info if "
            "you need strict permissions.",
            "diskutil info: GlobalPermissionsEnabled = false", "Permission-sensitive tools may behave differently."));
    }

    if (volume.isEncrypted == false && !volume.isInternal && !volume.isNetwork && volume.fileSystemType == "apfs") {
        findings.push_back(Finding::make(
            "volume.encryption", Severity::info, subject, name, "External volume is not encrypted",
            "Source code, credentials, and caches on " + name + " are readable by anyone who connects the drive.",
            "Consider encrypting it from Finder (right-click \u203A Encrypt) once you have a backup.",
            "diskutil info: Encryption = false", "A lost or stolen drive exposes its contents."));
    }
    return findings;
}

std::optional<Finding> DiagnosticEngine::freeSpaceFinding(const StorageVolume& volume) const {
    const std::int64_t total = volume.totalBytes;
    const std::int64_t available = volume.availableBytes;
    // The sealed read-only system volume still counts: it is the boot volume and shares its
    // container's free space with the data volume.
    if (total < 1 || (volume.isReadOnly && !volume.isBootVolume)) return std::nullopt;

    std::int64_t used = 0;
    if (__builtin_sub_overflow(total, available, &used)) return std::nullopt;
    const double usedFraction = static_cast<double>(std::max<std::int64_t>(used, 0)) / static_cast<double>(total);
    const double freeFraction = 1.0 - std::clamp(usedFraction, 0.0, 1.0);

    const bool criticalByFraction = freeFraction < thresholds.criticalFreeFraction;
    const bool criticalByBytes = belowByteLimit(available, total, thresholds.criticalFreeBytes);
    const bool warningByFraction = freeFraction < thresholds.warningFreeFraction;
    const bool warningByBytes = belowByteLimit(available, total, thresholds.warningFreeBytes);
    const bool critical = criticalByFraction || criticalByBytes;
    if (!critical && !warningByFraction && !warningByBytes) return std::nullopt;

    const auto percentFree = roundedInteger(freeFraction * 100.0);
    const auto warningPercent = truncatedInteger(thresholds.warningFreeFraction * 100.0);
    const auto criticalPercent = truncatedInteger(thresholds.criticalFreeFraction * 100.0);
    if (!percentFree || !warningPercent || !criticalPercent) return std::nullopt;

    const std::string availableText = ByteFormat::string(available);
    const std::string totalText = ByteFormat::string(total);
    return Finding::make(
        "volume.freeSpace", critical ? Severity::critical : Severity::warning, FindingSubject::volume(volume.id),
        volume.name, critical ? "Almost out of space" : "Running low on space",
        fmt::format("{} has {} free ({}%). Builds, simulators, and updates fail unpredictably when space runs out.",
                    volume.name, availableText, *percentFree),
        volume.isBootVolume
            ? "Review Developer Storage for DerivedData, old simulators, and package caches you can clear."
            : "Archive or move large folders to another drive.",
        fmt::format("{} available of {} (thresholds: warning < {}%, critical < {}%)", availableText, totalText,
                    *warningPercent, *criticalPercent),
        "Writes fail once the volume fills; macOS also needs free space for swap and updates.");
}

}  // namespace corvel
