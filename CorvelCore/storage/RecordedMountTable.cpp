#include "storage/RecordedMountTable.h"

#include <stdexcept>

namespace corvel {

RecordedMountTable::RecordedMountTable(const Json& machineDocument) {
    try {
        load(machineDocument);
    } catch (const std::exception& error) {
        // Replayed like an unreadable /proc: discovery reports it and still shows the disks.
        problem_ = error.what();
        hasMountInfo_ = false;
        figures_.clear();
    }
}

void RecordedMountTable::load(const Json& machineDocument) {
    if (!machineDocument.is_object()) throw DecodingError("machine recording: not a JSON object");
    if (auto text = machineDocument.find("mountinfo"); text != machineDocument.end()) {
        if (text->is_string()) {
            mountInfo_ = text->get<std::string>();
        } else if (text->is_array()) {
            for (const auto& line : *text) {
                if (!line.is_string()) throw DecodingError("mountinfo: every line must be a string");
                mountInfo_ += line.get<std::string>();
                mountInfo_ += '\n';
            }
        } else {
            throw DecodingError("mountinfo: expected a string or a list of lines");
        }
        hasMountInfo_ = true;
    }
    if (auto figures = machineDocument.find("statvfs"); figures != machineDocument.end()) {
        if (!figures->is_object()) throw DecodingError("statvfs: expected an object keyed by mount point");
        for (const auto& [mountPoint, value] : figures->items()) {
            figures_[mountPoint] = value.get<StatvfsFigures>();
        }
    }
}

std::string RecordedMountTable::mountInfo() {
    if (!problem_.empty()) throw std::runtime_error(problem_);
    if (!hasMountInfo_) throw std::runtime_error("no mountinfo recorded");
    return mountInfo_;
}

StatvfsFigures RecordedMountTable::statvfs(const std::string& mountPoint) {
    auto it = figures_.find(mountPoint);
    if (it == figures_.end()) throw std::runtime_error("no statvfs figures recorded for " + mountPoint);
    return it->second;
}

}  // namespace corvel
