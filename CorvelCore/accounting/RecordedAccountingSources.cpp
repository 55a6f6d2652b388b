#include "accounting/RecordedAccountingSources.h"

#include "accounting/ContainerAccounting.h"

#include <stdexcept>

namespace corvel {

RecordedAccountingSources::RecordedAccountingSources(const Json& machineDocument) : mountTable_(machineDocument) {
    if (!machineDocument.is_object()) return;
    if (const auto volumes = machineDocument.find("volumes"); volumes != machineDocument.end()) {
        try {
            volumes_ = volumes->get<std::vector<MountedVolumeRecord>>();
        } catch (const std::exception&) {
            // The discovery reports a malformed list already; here it only means no purgeable figure.
            volumes_.clear();
        }
    }
    const auto text = machineDocument.find("swaps");
    if (text == machineDocument.end()) return;
    if (text->is_string()) {
        swaps_ = text->get<std::string>();
        return;
    }
    if (!text->is_array()) {
        problem_ = "swaps: expected a string or a list of lines";
        return;
    }
    std::string joined;
    for (const auto& line : *text) {
        if (!line.is_string()) {
            problem_ = "swaps: every line must be a string";
            return;
        }
        joined += line.get<std::string>();
        joined += '\n';
    }
    swaps_ = std::move(joined);
}

std::string RecordedAccountingSources::swaps() {
    if (!swaps_) throw std::runtime_error(problem_);
    return *swaps_;
}

std::optional<std::int64_t> RecordedAccountingSources::purgeableBytes(const std::string& mountPoint) {
    for (const auto& volume : volumes_)
        if (volume.path == mountPoint) return ContainerAccounting::purgeableOf(volume);
    return std::nullopt;
}

}  // namespace corvel
