// Linux side of LocalProcesses: /proc read file by file relative to one open /proc handle, and
// signals sent through a pidfd once the process has been checked to be the one sampled, so that
// a pid reused in between is never signalled. The decoding is ProcPidFiles'.
#include "processes/LocalProcesses.h"

#include "common/UniqueFd.h"
#include "processes/ProcPidFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>

namespace corvel {
namespace {

// Reads a small /proc file into `buffer`; false when it cannot be opened or read (the process
// ended, or is not ours to look into).
bool readProcFile(int procFd, const std::string& relative, std::string& buffer) {
    UniqueFd fd(::openat(procFd, relative.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd) return false;
    buffer.resize(4096);
    std::size_t used = 0;
    for (;;) {
        if (used == buffer.size()) buffer.resize(buffer.size() * 2);
        const auto got = ::read(fd.get(), buffer.data() + used, buffer.size() - used);
        if (got < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (got == 0) break;
        used += static_cast<std::size_t>(got);
    }
    buffer.resize(used);
    return true;
}

std::optional<std::string> readLink(int procFd, const std::string& relative) {
    char target[PATH_MAX];
    const auto length = ::readlinkat(procFd, relative.c_str(), target, sizeof target);
    if (length <= 0) return std::nullopt;
    return ProcPidFiles::executableFromLink(std::string_view(target, static_cast<std::size_t>(length)));
}

std::vector<std::int32_t> listPids(int procFd) {
    std::vector<std::int32_t> pids;
    const int listing = ::dup(procFd);
    if (listing < 0) return pids;
    DIR* folder = ::fdopendir(listing);
    if (!folder) {
        ::close(listing);
        return pids;
    }
    while (const dirent* entry = ::readdir(folder)) {
        std::int32_t pid = 0;
        const std::string_view name(entry->d_name);
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (error == std::errc() && end == name.data() + name.size() && pid > 0) pids.push_back(pid);
    }
    ::closedir(folder);
    std::sort(pids.begin(), pids.end());
    return pids;
}

std::optional<ProcPidFiles::Stat> currentStat(std::int32_t pid) {
    UniqueFd proc(::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::string text;
    if (!proc || !readProcFile(proc.get(), std::to_string(pid) + "/stat", text)) return std::nullopt;
    return ProcPidFiles::parseStat(text);
}

// The sampled process, still alive: not ended, not a zombie, not a newer one under its pid.
bool isSameLiveProcess(const ProcessTarget& target) {
    const auto stat = currentStat(target.pid);
    return stat && !ProcPidFiles::isZombie(*stat) && stat->startTicks == target.startTime;
}

int signalNumber(ProcessSignal signal) {
    return signal == ProcessSignal::kill ? SIGKILL : SIGTERM;
}

SignalResult resultOf(int status) {
    if (status == 0) return SignalResult::sent;
    return errno == EPERM ? SignalResult::denied : SignalResult::gone;
}

}  // namespace

std::vector<ProcessSample> LocalProcesses::sampleAll() {
    std::vector<ProcessSample> samples;
    UniqueFd proc(::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!proc) return samples;
    ProcPidFiles::Units units;
    units.ticksPerSecond = ::sysconf(_SC_CLK_TCK);
    units.pageSize = ::sysconf(_SC_PAGESIZE);
    const auto pids = listPids(proc.get());
    samples.reserve(pids.size());
    std::string text;
    for (const auto pid : pids) {
        const auto folder = std::to_string(pid) + "/";
        if (!readProcFile(proc.get(), folder + "stat", text)) continue;
        const auto stat = ProcPidFiles::parseStat(text);
        if (!stat || ProcPidFiles::isZombie(*stat)) continue;
        if (!readProcFile(proc.get(), folder + "status", text)) continue;
        const auto status = ProcPidFiles::parseStatus(text);
        std::optional<std::int64_t> pss;
        std::optional<std::string> executable;
        if (!ProcPidFiles::isKernelThread(*stat)) {
            // Only the owner (or root) may read these; the others keep RSS and their short name.
            if (readProcFile(proc.get(), folder + "smaps_rollup", text)) pss = ProcPidFiles::parseSmapsRollup(text);
            executable = readLink(proc.get(), folder + "exe");
        }
        samples.push_back(ProcPidFiles::sample(pid, *stat, status, pss, std::move(executable), units));
    }
    return samples;
}

SignalResult LocalProcesses::send(const ProcessTarget& target, ProcessSignal signal) {
    // The pidfd holds on to this very process: once it is checked, the signal cannot reach
    // another process that takes over the pid.
    UniqueFd pidfd(static_cast<int>(::syscall(SYS_pidfd_open, target.pid, 0)));
    if (!pidfd) {
        if (errno != ENOSYS) return SignalResult::gone;
        // Kernels before 5.3: check and signal as close together as we can.
        if (!isSameLiveProcess(target)) return SignalResult::gone;
        return resultOf(::kill(target.pid, signalNumber(signal)));
    }
    if (!isSameLiveProcess(target)) return SignalResult::gone;
    return resultOf(static_cast<int>(::syscall(SYS_pidfd_send_signal, pidfd.get(), signalNumber(signal), nullptr, 0)));
}

bool LocalProcesses::isRunning(const ProcessTarget& target) {
    return isSameLiveProcess(target);
}

}  // namespace corvel
