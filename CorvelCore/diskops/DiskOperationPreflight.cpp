#include "diskops/DiskOperationPreflight.h"

#include "command/CommandError.h"
#include "common/Text.h"
#include "diskops/DiskIdentity.h"
#include "diskops/DiskOperationPolicy.h"
#include "processes/LsofOpenFiles.h"

#include <algorithm>
#include <set>

namespace corvel {
namespace {

using Status = PreflightCheck::Status;

PreflightCheck check(std::string title, bool passes, std::string detail) {
    return {std::move(title), passes ? Status::pass : Status::fail, std::move(detail)};
}

std::string describe(const std::exception& error) {
    if (const auto* command = dynamic_cast<const CommandError*>(&error)) return command->description();
    return error.what();
}

}  // namespace

DiskOperationPreflight::DiskOperationPreflight(CommandRunning& runner, std::string appBundlePath)
    : runner_(runner),
      ownedLister_(std::make_unique<LsofOpenFiles>(runner)),
      lister_(ownedLister_.get()),
      appBundlePath_(std::move(appBundlePath)),
      platform_(Platform::macos),
      ownProcessID_(currentProcessID()) {}

DiskOperationPreflight::DiskOperationPreflight(CommandRunning& runner, OpenFileListing& lister,
                                               std::string appBundlePath, Platform platform,
                                               std::int32_t ownProcessID)
    : runner_(runner),
      lister_(&lister),
      appBundlePath_(std::move(appBundlePath)),
      platform_(platform),
      ownProcessID_(ownProcessID) {}

std::vector<std::string> DiskOperationPreflight::identityDifferences(const DiskObject& target,
                                                                     const DiskIdentity& fresh) {
    std::vector<std::string> differences;
    if (target.kind == DiskObjectKind::volume && target.volumeUUID && fresh.volumeUUID &&
        *fresh.volumeUUID != *target.volumeUUID)
        differences.push_back("volume UUID " + *fresh.volumeUUID + " ≠ " + *target.volumeUUID);
    if (target.mountPoint && !fresh.mountPoints.empty() &&
        std::find(fresh.mountPoints.begin(), fresh.mountPoints.end(), *target.mountPoint) == fresh.mountPoints.end())
        differences.push_back("mount point " + fresh.mountPoints.front() + " ≠ " + *target.mountPoint);
    return differences;
}

PreflightReport DiskOperationPreflight::run(DiskOperation operation, const DiskObject& target,
                                            const std::vector<StorageVolume>& mountedVolumesOnDisk,
                                            TimePoint now) const {
    PreflightReport report;
    report.operation = operation;
    report.target = target;
    report.createdAt = now;
    auto& checks = report.checks;

    const auto availability = DiskOperationPolicy::availability(operation, target, appBundlePath_, platform_);
    checks.push_back(check("Operation allowed for this object", availability.isEnabled,
                           availability.reason.value_or(std::string(title(operation)) + " applies to a " +
                                                        toLower(rawValue(target.kind)) + ".")));

    if (target.kind != DiskObjectKind::mountPoint && !target.isNetwork) {
        const std::string title = "Disk identity revalidated";
        try {
            const auto fresh = DiskIdentity::read(platform_, runner_, target.identifier);
            const auto differences = identityDifferences(target, fresh);
            if (differences.empty())
                checks.push_back(check(title, true, target.identifier + " still matches the selected object."));
            else
                checks.push_back(check(title, false,
                                       "Changed since selection: " + join(differences, ", ") +
                                           ". Refresh and select again."));
        } catch (const std::exception&) {
            checks.push_back(check(title, false, target.identifier + " is no longer present."));
        }
    }

    const bool protectedOperation = operation == DiskOperation::eject || operation == DiskOperation::prepareFormat ||
                                    operation == DiskOperation::createAPFSVolume;
    if (target.isInternal && protectedOperation)
        checks.push_back(check("Internal disk protection", false, "Internal disks are protected."));

    if (operation == DiskOperation::unmount || operation == DiskOperation::eject) {
        std::vector<std::string> mountPoints;
        if (target.kind == DiskObjectKind::physicalDisk) {
            for (const auto& volume : mountedVolumesOnDisk)
                if (!volume.mountPoint.empty()) mountPoints.push_back(volume.mountPoint);
        } else if (target.mountPoint) {
            mountPoints.push_back(*target.mountPoint);
        }
        std::vector<std::string> scanProblems;
        for (const auto& mountPoint : mountPoints) {
            try {
                auto usages = lister_->usages(mountPoint);
                report.processes.insert(report.processes.end(), usages.begin(), usages.end());
            } catch (const std::exception& error) {
                scanProblems.push_back("Could not list the open files on " + mountPoint + ": " + describe(error));
            }
        }
        std::vector<ProcessUsage> own;
        std::vector<ProcessUsage> others;
        for (const auto& usage : report.processes) (usage.pid == ownProcessID_ ? own : others).push_back(usage);

        const bool runsFromTarget = std::any_of(mountPoints.begin(), mountPoints.end(), [&](const std::string& m) {
            return startsWith(appBundlePath_, m + "/");
        });
        checks.push_back(runsFromTarget ? check("Running app location", false,
                                                "This app runs from " + appBundlePath_ + ", which is on the target.")
                                        : check("Running app location", true, "The app does not run from the target."));

        if (!others.empty()) {
            std::set<std::string> commands;
            for (const auto& usage : others) commands.insert(usage.command);
            checks.push_back(check("Files in use", false,
                                   std::to_string(others.size()) + " open file(s) by " +
                                       join(std::vector<std::string>(commands.begin(), commands.end()), ", ") +
                                       ". Quit them first; force-unmount is never used."));
        } else if (!scanProblems.empty()) {
            // Not knowing who holds files open is no licence to go ahead.
            checks.push_back(check("Files in use", false, join(scanProblems, "; ")));
        } else {
            checks.push_back(check("Files in use", true, "No other process has files open on the target."));
        }
        if (!own.empty())
            checks.push_back(check("This app's own files", false,
                                   "Velmora itself has " + std::to_string(own.size()) +
                                       " file(s) open there (e.g. a running scan). Wait for it to finish or cancel "
                                       "it, then retry."));
    }

    if (operation == DiskOperation::createDirectory)
        checks.push_back(target.isWritable ? check("Volume writable", true, "The volume accepts new files.")
                                           : check("Volume writable", false, "The volume is read-only."));
    return report;
}

}  // namespace corvel
