// Something the monitor noticed in one refresh: a volume that appeared or disappeared since the
// previous snapshot, or a finding that is new or became more serious. Each carries the title and
// text a notification shows, so every front end words it the same way.
//
//   auto events = MonitorEvent::fromMountChange(MountChange::diff(previous, current), current.capturedAt);
//   events.push_back(MonitorEvent::alert(finding, current.capturedAt));
//   notify(events.front().title, events.front().message);
#pragma once

#include "common/EnumTable.h"
#include "common/ISO8601.h"
#include "common/Json.h"
#include "diagnostics/Finding.h"
#include "diagnostics/Severity.h"
#include "monitoring/MountChange.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel {

enum class MonitorEventKind { mounted, unmounted, alert };

template <>
struct EnumTable<MonitorEventKind> {
    static constexpr std::array<EnumEntry<MonitorEventKind>, 3> entries{{
        {MonitorEventKind::mounted, "mounted", "Mounted", Tone::notice},
        {MonitorEventKind::unmounted, "unmounted", "Unmounted", Tone::caution},
        {MonitorEventKind::alert, "alert", "Alert", Tone::bad},
    }};
};
CORVEL_ENUM_JSON(MonitorEventKind)

struct MonitorEvent {
    TimePoint timestamp{};
    MonitorEventKind kind = MonitorEventKind::alert;
    std::string subjectID;    // the volume's id, or the finding's id (rule | subject)
    std::string subjectName;  // the volume's or disk's name
    std::string title;        // a notification's title: "Volume unmounted", "Critical: Almost out of space"
    std::string message;      // its text
    std::optional<Severity> severity;  // alerts only

    // Mounted volumes first, then unmounted ones, each in snapshot order.
    static std::vector<MonitorEvent> fromMountChange(const MountChange::Diff& change, TimePoint at);
    static MonitorEvent alert(const Finding& finding, TimePoint at);

    bool operator==(const MonitorEvent&) const = default;
};

CORVEL_JSON_RECORD(MonitorEvent, timestamp, kind, subjectID, subjectName, title, message, severity)

}  // namespace corvel
