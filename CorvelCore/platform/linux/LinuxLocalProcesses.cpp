// Linux side of LocalProcesses: /proc read file by file relative to one open /proc handle, each
// file in one read into a buffer on the stack, the costly proportional set size (the kernel walks
// every page table for it) only when refineMemory asks, and
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
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>

namespace corvel {
namespace {

// Room for one /proc file that we read whole (stat, status, smaps_rollup are well under 2 KiB).
using ProcText = std::array<char, 4096>;

// "PID/name" relative to the /proc handle, without touching the heap.
struct ProcPath {
    ProcPath(std::int32_t pid, std::string_view name) {
        auto* end = std::to_chars(text.data(), text.data() + 16, pid).ptr;
        *end++ = '/';
        end = std::copy(name.begin(), name.end(), end);
        *end = '\0';
    }
    const char* c_str() const { return text.data(); }
    std::array<char, 48> text{};
};

// Reads a small /proc file into `buffer`; absent when it cannot be opened or read (the process
// ended, or is not ours to look into). These files are produced whole on the first read, so a
// read that leaves room in the buffer has reached the end and needs no second call; only the
// first buffer's worth is kept, which holds every line we decode.
std::optional<std::string_view> readProcFile(int procFd, const ProcPath& path, ProcText& buffer) {
    UniqueFd fd(::openat(procFd, path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd) return std::nullopt;
    ssize_t got = 0;
    do got = ::read(fd.get(), buffer.data(), buffer.size());
    while (got < 0 && errno == EINTR);
    if (got < 0) return std::nullopt;
    return std::string_view(buffer.data(), static_cast<std::size_t>(got));
}

std::optional<std::string> readLink(int procFd, const ProcPath& path) {
    char target[PATH_MAX];
    const auto length = ::readlinkat(procFd, path.c_str(), target, sizeof target);
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
    ProcText buffer;
    if (!proc) return std::nullopt;
    const auto text = readProcFile(proc.get(), ProcPath(pid, "stat"), buffer);
    if (!text) return std::nullopt;
    return ProcPidFiles::parseStat(*text);
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
    ProcText buffer;
    for (const auto pid : pids) {
        const auto statText = readProcFile(proc.get(), ProcPath(pid, "stat"), buffer);
        if (!statText) continue;
        const auto stat = ProcPidFiles::parseStat(*statText);
        if (!stat || ProcPidFiles::isZombie(*stat)) continue;
        const auto statusText = readProcFile(proc.get(), ProcPath(pid, "status"), buffer);
        if (!statusText) continue;
        const auto status = ProcPidFiles::parseStatus(*statusText);
        // Only the owner (or root) may read the program; the others keep their short name.
        std::optional<std::string> executable;
        if (!ProcPidFiles::isKernelThread(*stat)) executable = readLink(proc.get(), ProcPath(pid, "exe"));
        samples.push_back(ProcPidFiles::sample(pid, *stat, status, std::nullopt, std::move(executable), units));
    }
    return samples;
}

void LocalProcesses::refineMemory(std::vector<ProcessSample>& samples) {
    UniqueFd proc(::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!proc) return;
    ProcText buffer;
    for (auto& sample : samples) {
        if (sample.isKernelThread) continue;
        // Only the owner (or root) may read this; the others keep their resident set.
        const auto text = readProcFile(proc.get(), ProcPath(sample.pid, "smaps_rollup"), buffer);
        if (!text) continue;
        if (const auto pss = ProcPidFiles::parseSmapsRollup(*text)) {
            sample.memoryBytes = *pss;
            sample.memoryKind = MemoryKind::proportional;
        }
    }
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
