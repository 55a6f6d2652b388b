// One row of the processes list: an app with all its helper processes, or the processes of one
// program run by one user. What the action policy judges and what a person acts on.
//
//   ProcessGroup group = ProcessGrouping::group(samples, context).front();
//   group.name == "Safari";  group.kind == ProcessGroup::Kind::app;  group.pids.size() == 7
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"
#include "processes/MemoryKind.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct ProcessGroup {
    enum class Kind { app, process, system };

    // "<uid>:<appPath>" for apps, "<uid>:<program name>" otherwise: stable while the group runs
    // and unique even when two users run the same program.
    std::string id;
    std::string name;
    Kind kind = Kind::process;
    // The application bundle (macOS) or the desktop entry that starts it (Linux); apps only.
    std::optional<std::string> appPath;
    // The program of the group's first process; absent when the system would not say.
    std::optional<std::string> executablePath;
    std::vector<std::int32_t> pids;  // ascending
    bool isCurrentUser = false;
    double cpuPercent = 0;  // summed over the group; 100 is one core fully busy
    std::int64_t memoryBytes = 0;
    MemoryKind memoryKind = MemoryKind::resident;  // what memoryBytes measures
    std::uint32_t uid = 0;

    bool operator==(const ProcessGroup&) const = default;
};

template <>
struct EnumTable<ProcessGroup::Kind> {
    static constexpr std::array<EnumEntry<ProcessGroup::Kind>, 3> entries{{
        {ProcessGroup::Kind::app, "app", "app"},
        {ProcessGroup::Kind::process, "process", "process"},
        {ProcessGroup::Kind::system, "system", "system", Tone::muted},
    }};
};
CORVEL_ENUM_JSON(ProcessGroup::Kind)
CORVEL_JSON_RECORD(ProcessGroup, id, name, kind, appPath, executablePath, pids, isCurrentUser, cpuPercent, memoryBytes,
                   memoryKind, uid)

}  // namespace corvel
