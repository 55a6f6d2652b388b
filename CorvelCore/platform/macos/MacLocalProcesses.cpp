// macOS side of LocalProcesses, through libproc: proc_listallpids for the list, proc_pidinfo
// (PROC_PIDTBSDINFO) for owner, parent, name and start time, proc_pidpath for the program, and
// proc_pid_rusage for processor time and the physical footprint, the memory figure the system's
// own activity monitor shows. Signals go through kill(2) right after the start time is checked.
#include "processes/LocalProcesses.h"

#include <libproc.h>
#include <mach/mach_time.h>
#include <signal.h>
#include <sys/proc.h>
#include <sys/proc_info.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>

namespace corvel {
namespace {

std::optional<proc_bsdinfo> bsdInfo(pid_t pid) {
    proc_bsdinfo info{};
    if (proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &info, sizeof info) != static_cast<int>(sizeof info))
        return std::nullopt;
    return info;
}

std::uint64_t startTimeOf(const proc_bsdinfo& info) {
    return info.pbi_start_tvsec * 1'000'000 + info.pbi_start_tvusec;
}

}  // namespace

std::vector<ProcessSample> LocalProcesses::sampleAll() {
    std::vector<ProcessSample> samples;
    const int expected = proc_listallpids(nullptr, 0);
    if (expected <= 0) return samples;
    // Room for processes started while we list.
    std::vector<pid_t> pids(static_cast<std::size_t>(expected) + 64);
    const int count = proc_listallpids(pids.data(), static_cast<int>(pids.size() * sizeof(pid_t)));
    if (count <= 0) return samples;
    pids.resize(std::min(pids.size(), static_cast<std::size_t>(count)));
    std::sort(pids.begin(), pids.end());

    // Processor times are in Mach absolute time units (nanoseconds only on Intel).
    mach_timebase_info_data_t timebase{};
    mach_timebase_info(&timebase);
    samples.reserve(pids.size());
    for (const pid_t pid : pids) {
        const auto info = bsdInfo(pid);
        if (!info || info->pbi_status == SZOMB) continue;
        ProcessSample sample;
        sample.pid = pid;
        sample.parentPid = static_cast<std::int32_t>(info->pbi_ppid);
        sample.uid = info->pbi_ruid;
        sample.name = info->pbi_name[0] ? info->pbi_name : info->pbi_comm;
        sample.isKernelThread = pid == 0;  // kernel_task
        sample.startTime = startTimeOf(*info);
        char path[PROC_PIDPATHINFO_MAXSIZE];
        if (proc_pidpath(pid, path, sizeof path) > 0) sample.executablePath = std::string(path);
        rusage_info_v2 usage{};
        // Other users' processes refuse this without root: their figures stay at zero.
        if (proc_pid_rusage(pid, RUSAGE_INFO_V2, reinterpret_cast<rusage_info_t*>(&usage)) == 0) {
            const auto ticks = usage.ri_user_time + usage.ri_system_time;
            sample.cpuNanoseconds = static_cast<std::int64_t>(ticks * timebase.numer / timebase.denom);
            sample.memoryBytes = static_cast<std::int64_t>(usage.ri_phys_footprint);
        }
        sample.memoryKind = MemoryKind::footprint;
        samples.push_back(std::move(sample));
    }
    return samples;
}

// The footprint read with the rest is already the figure the system's own monitor shows.
void LocalProcesses::refineMemory(std::vector<ProcessSample>&) {}

SignalResult LocalProcesses::send(const ProcessTarget& target, ProcessSignal signal) {
    if (!isRunning(target)) return SignalResult::gone;
    if (::kill(target.pid, signal == ProcessSignal::kill ? SIGKILL : SIGTERM) == 0) return SignalResult::sent;
    return errno == EPERM ? SignalResult::denied : SignalResult::gone;
}

bool LocalProcesses::isRunning(const ProcessTarget& target) {
    const auto info = bsdInfo(target.pid);
    return info && info->pbi_status != SZOMB && startTimeOf(*info) == target.startTime;
}

}  // namespace corvel
