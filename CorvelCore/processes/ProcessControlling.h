// Signals, watches and starts processes for the process actions. The live machine's is
// LocalProcesses; tests use it on their own child processes, or a scripted one.
//
//   ProcessTarget target{sample.pid, sample.startTime};
//   if (control.send(target, ProcessSignal::terminate) == SignalResult::sent) ...
//   while (control.isRunning(target)) wait();
#pragma once

#include "common/EnumTable.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

// One process as sampled: a pid reused by a newer process is not this target.
struct ProcessTarget {
    std::int32_t pid = 0;
    std::uint64_t startTime = 0;
    bool operator==(const ProcessTarget&) const = default;
};

enum class ProcessSignal {
    terminate,  // the polite request to quit, which a program may handle or ignore
    kill,       // ends the process without asking
};

enum class SignalResult {
    sent,
    gone,    // the process had already ended (or its pid now names another process)
    denied,  // the system refused: the process belongs to someone else
};

template <>
struct EnumTable<SignalResult> {
    static constexpr std::array<EnumEntry<SignalResult>, 3> entries{{
        {SignalResult::sent, "sent", "sent"},
        {SignalResult::gone, "gone", "already gone"},
        {SignalResult::denied, "denied", "not permitted"},
    }};
};

// A program that could not be started; the text names it and the system's reason.
class ProcessLaunchError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class ProcessControlling {
public:
    virtual ~ProcessControlling() = default;

    virtual SignalResult send(const ProcessTarget& target, ProcessSignal signal) = 0;
    // False once the process has ended, also while it waits as a zombie for its parent.
    virtual bool isRunning(const ProcessTarget& target) = 0;
    // Starts `arguments` (the first is the program; a bare name is looked up in PATH) in a session
    // of its own, not as our child, with standard streams on the null device; its pid. Throws
    // ProcessLaunchError.
    virtual std::int32_t startDetached(const std::vector<std::string>& arguments) = 0;
};

}  // namespace corvel
