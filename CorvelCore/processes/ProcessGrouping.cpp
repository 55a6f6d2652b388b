#include "processes/ProcessGrouping.h"

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"
#include "common/Text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>
#include <unordered_map>

namespace corvel::ProcessGrouping {
namespace {

// Linux keeps only this many bytes of a process's short name.
constexpr std::size_t shortNameLength = 15;

// Finds the desktop application a Linux process belongs to.
class DesktopIndex {
public:
    explicit DesktopIndex(const std::vector<DesktopEntry>& entries) : entries_(entries) {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (entries[i].executableName) byProgram_.try_emplace(*entries[i].executableName, i);
            if (entries[i].startupWMClass) byWindowClass_.try_emplace(toLower(*entries[i].startupWMClass), i);
        }
    }

    const DesktopEntry* find(const ProcessSample& sample) const {
        if (entries_.empty() || sample.isKernelThread) return nullptr;
        const std::string program = sample.executablePath ? lastComponent(*sample.executablePath) : std::string();
        for (const auto& name : {program, sample.name}) {
            if (name.empty()) continue;
            if (const auto found = byProgram_.find(name); found != byProgram_.end()) return &entries_[found->second];
            if (const auto found = byWindowClass_.find(toLower(name)); found != byWindowClass_.end())
                return &entries_[found->second];
        }
        // A short name cut at the system's limit still names the program it starts.
        if (sample.name.size() == shortNameLength)
            for (const auto& entry : entries_)
                if (entry.executableName && startsWith(*entry.executableName, sample.name)) return &entry;
        return nullptr;
    }

private:
    const std::vector<DesktopEntry>& entries_;
    std::unordered_map<std::string, std::size_t> byProgram_;
    std::unordered_map<std::string, std::size_t> byWindowClass_;
};

struct Member {
    std::string id;
    std::string name;
    std::optional<std::string> appPath;
};

Member memberOf(const ProcessSample& sample, const ProcessGroupingContext& context, const DesktopIndex& desktop) {
    const auto owner = std::to_string(sample.uid) + ":";
    if (sample.isKernelThread) {
        // "kworker/0:1-events" and its siblings are one kind of kernel worker.
        const auto name = sample.name.substr(0, sample.name.find('/'));
        return {owner + "[" + name + "]", name, std::nullopt};
    }
    if (context.platform == Platform::macos && sample.executablePath) {
        if (auto bundle = appBundle(*sample.executablePath)) {
            auto name = lastComponent(*bundle);
            name.resize(name.size() - 4);
            return {owner + *bundle, name, bundle};
        }
    }
    if (context.platform == Platform::linux)
        if (const auto* entry = desktop.find(sample)) return {owner + entry->path, entry->name, entry->path};
    auto name = sample.executablePath ? lastComponent(*sample.executablePath) : sample.name;
    if (name.empty()) name = sample.name;
    return {owner + name, name, std::nullopt};
}

std::optional<std::int32_t> pidNumber(std::string_view text) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value <= 0) return std::nullopt;
    return value;
}

}  // namespace

std::optional<std::string> appBundle(std::string_view executablePath) {
    std::size_t start = 0;
    while (start < executablePath.size()) {
        auto end = executablePath.find('/', start);
        if (end == std::string_view::npos) end = executablePath.size();
        const auto component = executablePath.substr(start, end - start);
        // A bundle is a folder: the program itself may not be called "Something.app".
        if (component.size() > 4 && endsWith(component, ".app") && end < executablePath.size())
            return std::string(executablePath.substr(0, end));
        start = end + 1;
    }
    return std::nullopt;
}

bool isSystemProcess(const ProcessSample& sample) {
    if (sample.isKernelThread) return true;
    return sample.uid == 0 && (sample.pid == 1 || sample.parentPid <= 1);
}

std::vector<ProcessGroup> group(const std::vector<ProcessSample>& samples, const ProcessGroupingContext& context) {
    const DesktopIndex desktop(context.desktopApplications);
    std::vector<ProcessGroup> groups;
    std::unordered_map<std::string, std::size_t> indexOf;
    std::vector<bool> hasSystemMember;
    // The lowest pid that names a program speaks for the group.
    std::vector<std::int32_t> programPid;
    for (const auto& sample : samples) {
        auto member = memberOf(sample, context, desktop);
        const auto [slot, isNew] = indexOf.try_emplace(member.id, groups.size());
        if (isNew) {
            ProcessGroup fresh;
            fresh.id = member.id;
            fresh.name = member.name;
            fresh.appPath = member.appPath;
            fresh.isCurrentUser = sample.uid == context.currentUid;
            fresh.uid = sample.uid;
            fresh.memoryKind = sample.memoryKind;
            groups.push_back(std::move(fresh));
            hasSystemMember.push_back(false);
            programPid.push_back(std::numeric_limits<std::int32_t>::max());
        }
        const auto index = slot->second;
        auto& target = groups[index];
        target.pids.push_back(sample.pid);
        target.cpuPercent += sample.cpuPercent;
        target.memoryBytes = checkedAdd(target.memoryBytes, sample.memoryBytes);
        target.memoryKind = coarser(target.memoryKind, sample.memoryKind);
        if (isSystemProcess(sample)) hasSystemMember[index] = true;
        if (sample.executablePath && sample.pid < programPid[index]) {
            programPid[index] = sample.pid;
            target.executablePath = sample.executablePath;
        }
    }
    for (std::size_t i = 0; i < groups.size(); ++i) {
        auto& each = groups[i];
        std::sort(each.pids.begin(), each.pids.end());
        each.kind = hasSystemMember[i] ? ProcessGroup::Kind::system
                    : each.appPath     ? ProcessGroup::Kind::app
                                       : ProcessGroup::Kind::process;
    }
    std::sort(groups.begin(), groups.end(), [](const ProcessGroup& a, const ProcessGroup& b) {
        return a.name != b.name ? a.name < b.name : a.id < b.id;
    });
    return groups;
}

std::vector<ProcessGroup> sorted(std::vector<ProcessGroup> groups, ProcessSort sort) {
    std::stable_sort(groups.begin(), groups.end(), [sort](const ProcessGroup& a, const ProcessGroup& b) {
        if (sort == ProcessSort::cpu && a.cpuPercent != b.cpuPercent) return a.cpuPercent > b.cpuPercent;
        if (sort == ProcessSort::memory && a.memoryBytes != b.memoryBytes) return a.memoryBytes > b.memoryBytes;
        return a.name != b.name ? a.name < b.name : a.id < b.id;
    });
    return groups;
}

std::vector<ProcessGroup> find(const std::vector<ProcessGroup>& groups, std::string_view text) {
    std::vector<ProcessGroup> found;
    for (const auto& each : groups)
        if (each.id == text) return {each};
    for (const auto& each : groups)
        if (each.name == text) found.push_back(each);
    if (!found.empty()) return found;
    const auto lower = toLower(text);
    for (const auto& each : groups)
        if (toLower(each.name) == lower) found.push_back(each);
    if (!found.empty()) return found;
    if (const auto pid = pidNumber(text))
        for (const auto& each : groups)
            if (std::find(each.pids.begin(), each.pids.end(), *pid) != each.pids.end()) return {each};
    return found;
}

std::vector<ProcessTarget> targets(const ProcessGroup& group, const std::vector<ProcessSample>& samples) {
    std::unordered_map<std::int32_t, std::uint64_t> startOf;
    for (const auto& sample : samples) startOf.emplace(sample.pid, sample.startTime);
    std::vector<ProcessTarget> result;
    for (const auto pid : group.pids) {
        // A pid the sample does not hold cannot be vouched for: start time 0 matches no process.
        const auto found = startOf.find(pid);
        result.push_back({pid, found == startOf.end() ? 0 : found->second});
    }
    return result;
}

std::optional<MemoryKind> sharedMemoryKind(const std::vector<ProcessGroup>& groups) {
    if (groups.empty()) return std::nullopt;
    const auto kind = groups.front().memoryKind;
    for (const auto& group : groups)
        if (group.memoryKind != kind) return std::nullopt;
    return kind;
}

}  // namespace corvel::ProcessGrouping
