// Turns one sample of every process into the groups a person recognises: an app with all its
// helper processes (macOS: everything running from inside one ".app" bundle; Linux: the programs
// of one desktop application), else the processes of one program run by one user. Root's daemons
// (started by the system's first process) and the kernel's own threads are of kind system.
// Pure, so it is tested on fixed samples.
//
//   ProcessGroupingContext context{Platform::linux, getuid(), DesktopApplications::read(env, home)};
//   auto groups = ProcessGrouping::sorted(ProcessGrouping::group(samples, context), ProcessSort::cpu);
//   auto matches = ProcessGrouping::find(groups, "firefox");   // by id, name or pid
#pragma once

#include "common/Platform.h"
#include "processes/DesktopEntry.h"
#include "processes/ProcessControlling.h"
#include "processes/ProcessGroup.h"
#include "processes/ProcessSample.h"
#include "processes/ProcessSort.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct ProcessGroupingContext {
    Platform platform = Platform::linux;
    std::uint32_t currentUid = 0;
    // Linux only, in the order they are searched (the person's own first).
    std::vector<DesktopEntry> desktopApplications;
};

namespace ProcessGrouping {

// Groups in order of name, then id; pids ascending; CPU and memory summed.
std::vector<ProcessGroup> group(const std::vector<ProcessSample>& samples, const ProcessGroupingContext& context);

// The outermost application bundle a macOS program lies in: "/Applications/Safari.app" for
// "/Applications/Safari.app/Contents/MacOS/Safari"; absent outside any bundle.
std::optional<std::string> appBundle(std::string_view executablePath);

// A process the system runs for itself: a kernel thread, or root's process started by the
// kernel or by the first process (pid 1), the way service managers start daemons.
bool isSystemProcess(const ProcessSample& sample);

// Busiest first; ties by name, then id.
std::vector<ProcessGroup> sorted(std::vector<ProcessGroup> groups, ProcessSort sort);

// The groups `text` names: the one with that id; else those with that name (exactly, then
// ignoring ASCII case); else the one holding that pid. Empty when none.
std::vector<ProcessGroup> find(const std::vector<ProcessGroup>& groups, std::string_view text);

// The group's processes as sampled, so that an action never reaches a newer process that
// reuses one of their pids.
std::vector<ProcessTarget> targets(const ProcessGroup& group, const std::vector<ProcessSample>& samples);

// The one kind every group's memory figure is, so that a table can say it once in its heading;
// absent when the groups mix kinds (or there are none) and each figure must say its own.
std::optional<MemoryKind> sharedMemoryKind(const std::vector<ProcessGroup>& groups);

}  // namespace ProcessGrouping
}  // namespace corvel
