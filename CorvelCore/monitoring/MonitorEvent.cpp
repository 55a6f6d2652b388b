#include "monitoring/MonitorEvent.h"

#include "common/ByteFormat.h"

namespace corvel {
namespace {

std::string volumePlace(const StorageVolume& volume) {
    return volume.mountPoint.empty() ? volume.name : volume.name + " (" + volume.mountPoint + ")";
}

}  // namespace

std::vector<MonitorEvent> MonitorEvent::fromMountChange(const MountChange::Diff& change, TimePoint at) {
    std::vector<MonitorEvent> events;
    for (const auto& volume : change.mounted) {
        std::string message = volumePlace(volume) + " was mounted";
        if (volume.totalBytes > 0)
            message += ": " + ByteFormat::string(volume.availableBytes) + " free of " +
                       ByteFormat::string(volume.totalBytes);
        events.push_back({at, MonitorEventKind::mounted, volume.id, volume.name, "Volume mounted", message + ".",
                          std::nullopt});
    }
    for (const auto& volume : change.unmounted) {
        events.push_back({at, MonitorEventKind::unmounted, volume.id, volume.name, "Volume unmounted",
                          volumePlace(volume) + " is no longer mounted.", std::nullopt});
    }
    return events;
}

MonitorEvent MonitorEvent::alert(const Finding& finding, TimePoint at) {
    std::string message = finding.subjectName.empty() ? finding.detail : finding.subjectName + ": " + finding.detail;
    return {at,
            MonitorEventKind::alert,
            finding.id(),
            finding.subjectName,
            std::string(label(finding.severity)) + ": " + finding.title,
            std::move(message),
            finding.severity};
}

}  // namespace corvel
