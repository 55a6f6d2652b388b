#include "processes/ProcPidFiles.h"

#include "common/CheckedArithmetic.h"
#include "common/Text.h"

#include <charconv>
#include <limits>

namespace corvel::ProcPidFiles {
namespace {

// The kernel marks its own threads with PF_KTHREAD in the stat line's flags.
constexpr std::uint64_t kernelThreadFlag = 0x00200000;

template <class T>
std::optional<T> number(std::string_view text) {
    T value{};
    const auto* end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || next != end) return std::nullopt;
    return value;
}

// The next space-separated field of `rest`, consumed.
std::string_view nextField(std::string_view& rest) {
    while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
    const auto end = rest.find(' ');
    const auto field = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end);
    return field;
}

// The value of "Key:<whitespace>value..." lines, first word only.
std::optional<std::string_view> lineValue(std::string_view text, std::string_view key) {
    std::size_t start = 0;
    while (start < text.size()) {
        auto end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        const auto line = text.substr(start, end - start);
        if (line.size() > key.size() && line.substr(0, key.size()) == key && line[key.size()] == ':') {
            auto value = line.substr(key.size() + 1);
            while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
            const auto stop = value.find_first_of(" \t");
            return value.substr(0, stop);
        }
        start = end + 1;
    }
    return std::nullopt;
}

std::int64_t nanoseconds(std::uint64_t ticks, std::int64_t ticksPerSecond) {
    constexpr std::int64_t perSecond = 1'000'000'000;
    if (ticksPerSecond <= 0 || ticks > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return 0;
    const auto whole = static_cast<std::int64_t>(ticks) / ticksPerSecond;
    const auto part = static_cast<std::int64_t>(ticks) % ticksPerSecond;
    return checkedAdd(checkedMultiply(whole, perSecond), part * perSecond / ticksPerSecond);
}

}  // namespace

std::optional<Stat> parseStat(std::string_view text) {
    // "pid (name) state ppid ..."; the name may hold ") " itself, so the last ')' ends it.
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) return std::nullopt;
    Stat stat;
    stat.name = std::string(text.substr(open + 1, close - open - 1));
    auto rest = text.substr(close + 1);
    if (!rest.empty() && rest.back() == '\n') rest.remove_suffix(1);
    // Fields from the third on, numbered as in proc(5).
    std::string_view fields[23];
    int count = 0;
    for (; count < 23; ++count) {
        fields[count] = nextField(rest);
        if (fields[count].empty()) break;
    }
    if (count < 22) return std::nullopt;
    const auto field = [&](int number) { return fields[number - 3]; };
    if (field(3).size() != 1) return std::nullopt;
    stat.state = field(3).front();
    const auto parent = number<std::int32_t>(field(4));
    const auto flags = number<std::uint64_t>(field(9));
    const auto user = number<std::uint64_t>(field(14));
    const auto system = number<std::uint64_t>(field(15));
    const auto start = number<std::uint64_t>(field(22));
    const auto resident = number<std::int64_t>(field(24));
    if (!parent || !flags || !user || !system || !start || !resident) return std::nullopt;
    stat.parentPid = *parent;
    stat.flags = *flags;
    stat.userTicks = *user;
    stat.systemTicks = *system;
    stat.startTicks = *start;
    stat.residentPages = *resident < 0 ? 0 : *resident;
    return stat;
}

Status parseStatus(std::string_view text) {
    Status status;
    if (const auto uid = lineValue(text, "Uid")) status.realUid = number<std::uint32_t>(*uid);
    return status;
}

std::optional<std::int64_t> parseSmapsRollup(std::string_view text) {
    const auto value = lineValue(text, "Pss");
    if (!value) return std::nullopt;
    const auto kilobytes = number<std::int64_t>(*value);
    if (!kilobytes || *kilobytes < 0) return std::nullopt;
    return checkedMultiply(*kilobytes, 1024);
}

std::string executableFromLink(std::string_view link) {
    constexpr std::string_view deleted = " (deleted)";
    if (endsWith(link, deleted)) link.remove_suffix(deleted.size());
    return std::string(link);
}

bool isZombie(const Stat& stat) {
    // X is a process being torn down; neither can be quit any more.
    return stat.state == 'Z' || stat.state == 'X';
}

bool isKernelThread(const Stat& stat) {
    return (stat.flags & kernelThreadFlag) != 0;
}

ProcessSample sample(std::int32_t pid, const Stat& stat, const Status& status, std::optional<std::int64_t> pssBytes,
                     std::optional<std::string> executablePath, Units units) {
    ProcessSample sample;
    sample.pid = pid;
    sample.parentPid = stat.parentPid;
    // An owner we could not read is nobody's we know: never taken for the current user or root.
    sample.uid = status.realUid.value_or(std::numeric_limits<std::uint32_t>::max());
    sample.name = stat.name;
    sample.executablePath = std::move(executablePath);
    sample.isKernelThread = isKernelThread(stat);
    sample.startTime = stat.startTicks;
    const auto ticks = stat.userTicks + stat.systemTicks;
    sample.cpuNanoseconds = nanoseconds(ticks < stat.userTicks ? 0 : ticks, units.ticksPerSecond);
    if (pssBytes) {
        sample.memoryBytes = *pssBytes;
        sample.memoryKind = MemoryKind::proportional;
    } else {
        sample.memoryBytes = checkedMultiply(stat.residentPages, units.pageSize);
        sample.memoryKind = MemoryKind::resident;
    }
    return sample;
}

}  // namespace corvel::ProcPidFiles
