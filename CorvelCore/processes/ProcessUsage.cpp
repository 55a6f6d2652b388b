#include "processes/ProcessUsage.h"

#include <map>

namespace corvel {

std::vector<ProcessUsage::Group> ProcessUsage::byProcess(const std::vector<ProcessUsage>& usages) {
    std::vector<Group> groups;
    std::map<std::int32_t, std::size_t> indexOf;
    for (const auto& usage : usages) {
        const auto [slot, isNew] = indexOf.try_emplace(usage.pid, groups.size());
        if (isNew) groups.push_back({usage.pid, usage.command, {}});
        groups[slot->second].usages.push_back(usage);
    }
    return groups;
}

}  // namespace corvel
