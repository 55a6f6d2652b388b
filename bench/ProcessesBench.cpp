// What watching processes costs against the programs people would otherwise run, in paired rounds
// on this machine: the open-file scan of one mount point against `lsof +f -- MOUNT` and
// `fuser -m MOUNT` (same processes found?), and one sample of every process against
// `ps -eo pid,pcpu,rss,comm` (CPU time), and apart from it what the proportional set sizes add. Our side runs in this
// process, as the preflight and the desktop application run it; the peers' side is a whole program, as people run it.
//
//   build/release/bench/processes_bench [MOUNT] [ROUNDS]      # default: / and 15 rounds
#include "processes/LocalProcesses.h"
#include "processes/ProcOpenFiles.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

struct Run {
    double seconds = 0;     // wall time
    double cpuSeconds = 0;  // user + system time
    std::string output;
};

double cpuOf(const rusage& usage) {
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// A peer program with its standard output captured and its standard error discarded.
Run runProgram(const std::vector<std::string>& arguments) {
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) std::exit(2);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclose(&actions, pipeEnds[0]);
    std::vector<char*> argv;
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    Run run;
    const auto start = Clock::now();
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) {
        fmt::print(stderr, "processes_bench: cannot start {}\n", arguments[0]);
        std::exit(2);
    }
    ::close(pipeEnds[1]);
    char buffer[65536];
    for (ssize_t n; (n = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0;) run.output.append(buffer, n);
    ::close(pipeEnds[0]);
    int status = 0;
    rusage usage{};
    ::wait4(pid, &status, 0, &usage);
    run.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    run.cpuSeconds = cpuOf(usage);
    posix_spawn_file_actions_destroy(&actions);
    return run;
}

template <class Work>
Run runHere(Work work) {
    rusage before{}, after{};
    ::getrusage(RUSAGE_THREAD, &before);
    const auto start = Clock::now();
    Run run;
    run.output = work();
    run.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    ::getrusage(RUSAGE_THREAD, &after);
    run.cpuSeconds = cpuOf(after) - cpuOf(before);
    return run;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Every whitespace-separated number of a text: one pid per line from us, fuser's list of pids.
std::set<int> pidsIn(const std::string& text) {
    std::set<int> pids;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        if (std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; }))
            pids.insert(std::stoi(word));
    return pids;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string mount = argc > 1 ? argv[1] : "/";
    const int rounds = argc > 2 ? std::max(3, std::atoi(argv[2])) : 15;
    corvel::ProcOpenFiles lister;
    corvel::LocalProcesses local;
    std::vector<double> ours, lsof, fuser, sampleCpu, sampleWall, psCpu, psWall, refineCpu;
    std::set<int> ourPids, fuserPids;
    std::size_t processes = 0;
    for (int round = 0; round < rounds; ++round) {
        // Alternate who goes first so that both meet the same cache and load.
        const auto scan = [&] {
            const auto run = runHere([&] {
                std::string pids;
                for (const auto& usage : lister.usages(mount)) pids += std::to_string(usage.pid) + "\n";
                return pids;
            });
            ours.push_back(run.seconds);
            ourPids = pidsIn(run.output);
        };
        const auto peers = [&] {
            lsof.push_back(runProgram({"lsof", "+f", "--", mount}).seconds);
            const auto run = runProgram({"fuser", "-m", mount});
            fuser.push_back(run.seconds);
            fuserPids = pidsIn(run.output);
        };
        if (round % 2 == 0) {
            scan();
            peers();
        } else {
            peers();
            scan();
        }
        std::vector<corvel::ProcessSample> samples;
        const auto sample = runHere([&] {
            samples = local.sampleAll();
            return std::string();
        });
        processes = samples.size();
        sampleCpu.push_back(sample.cpuSeconds);
        sampleWall.push_back(sample.seconds);
        // The exact memory figures, which a reading adds once to the last of its two samples.
        refineCpu.push_back(runHere([&] {
                                local.refineMemory(samples);
                                return std::string();
                            }).cpuSeconds);
        const auto ps = runProgram({"ps", "-eo", "pid,pcpu,rss,comm"});
        psCpu.push_back(ps.cpuSeconds);
        psWall.push_back(ps.seconds);
    }
    const double faster = std::min(median(lsof), median(fuser));
    std::set<int> onlyOurs, onlyFuser;
    std::set_difference(ourPids.begin(), ourPids.end(), fuserPids.begin(), fuserPids.end(),
                        std::inserter(onlyOurs, onlyOurs.end()));
    std::set_difference(fuserPids.begin(), fuserPids.end(), ourPids.begin(), ourPids.end(),
                        std::inserter(onlyFuser, onlyFuser.end()));
    fmt::print("open files on {} ({} rounds, medians)\n", mount, rounds);
    fmt::print("  velmora (in process)  {:8.2f} ms  {} processes\n", median(ours) * 1e3, ourPids.size());
    fmt::print("  lsof +f --            {:8.2f} ms\n", median(lsof) * 1e3);
    fmt::print("  fuser -m              {:8.2f} ms  {} processes\n", median(fuser) * 1e3, fuserPids.size());
    fmt::print("  ratio to the faster   {:8.2f}  (target at most 0.30)\n", median(ours) / faster);
    fmt::print("  processes only we found {}, only fuser found {} (the peers and this bench come and go)\n",
               onlyOurs.size(), onlyFuser.size());
    fmt::print("one sample of all {} processes ({} rounds, medians)\n", processes, rounds);
    fmt::print("  velmora CPU {:6.2f} ms, wall {:6.2f} ms  (target at most 20 ms CPU)\n", median(sampleCpu) * 1e3,
               median(sampleWall) * 1e3);
    fmt::print("  ps -eo    CPU {:6.2f} ms, wall {:6.2f} ms\n", median(psCpu) * 1e3, median(psWall) * 1e3);
    fmt::print("  ratio (CPU) {:.2f}  (target at most 1.00)\n", median(sampleCpu) / median(psCpu));
    fmt::print("  + PSS of every process (once per reading) CPU {:6.2f} ms\n", median(refineCpu) * 1e3);
    return 0;
}
