// Decoders of the Linux process files /proc/[pid]/stat, /proc/[pid]/status and
// /proc/[pid]/smaps_rollup, and their assembly into one ProcessSample. Pure, so they are tested
// on literal samples anywhere; the Linux reader only opens the files.
//
//   auto stat = ProcPidFiles::parseStat(statText);            // absent: not a stat line
//   auto status = ProcPidFiles::parseStatus(statusText);
//   auto pss = ProcPidFiles::parseSmapsRollup(rollupText);    // absent: no Pss line
//   ProcessSample sample = ProcPidFiles::sample(pid, *stat, status, pss, exe, units);
#pragma once

#include "processes/ProcessSample.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvel::ProcPidFiles {

// The fields of one stat line that we use.
struct Stat {
    std::string name;  // between the parentheses; may itself hold spaces and parentheses
    char state = '?';  // R, S, D, Z, T, ...
    std::int32_t parentPid = 0;
    std::uint64_t flags = 0;
    std::uint64_t userTicks = 0;
    std::uint64_t systemTicks = 0;
    std::uint64_t startTicks = 0;  // since boot
    std::int64_t residentPages = 0;
    bool operator==(const Stat&) const = default;
};

struct Status {
    std::optional<std::uint32_t> realUid;
    bool operator==(const Status&) const = default;
};

// The system's clock tick and page size (sysconf), which the stat line counts in.
struct Units {
    std::int64_t ticksPerSecond = 100;
    std::int64_t pageSize = 4096;
};

std::optional<Stat> parseStat(std::string_view text);
Status parseStatus(std::string_view text);
// The proportional set size in bytes.
std::optional<std::int64_t> parseSmapsRollup(std::string_view text);
// The target of /proc/[pid]/exe without the " (deleted)" the kernel adds once the file is gone
// (an updated program that is still running).
std::string executableFromLink(std::string_view link);

bool isZombie(const Stat& stat);
bool isKernelThread(const Stat& stat);

// One sample: PSS when it could be read, else the resident set from the stat line.
ProcessSample sample(std::int32_t pid, const Stat& stat, const Status& status, std::optional<std::int64_t> pssBytes,
                     std::optional<std::string> executablePath, Units units);

}  // namespace corvel::ProcPidFiles
