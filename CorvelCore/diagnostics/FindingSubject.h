// What a finding is about: one physical disk (by its device id) or one volume (by its volume id).
// Its JSON form, {"disk": {"_0": "disk4"}} or {"volume": {"_0": "X"}}, is shared with stored
// reports and the agent, so it must not change.
//
//   FindingSubject::volume("X").id() == "volume:X"
#pragma once

#include "common/Json.h"

#include <cstddef>
#include <functional>
#include <string>

namespace corvel {

struct FindingSubject {
    enum class Kind { disk, volume };

    Kind kind = Kind::disk;
    std::string payload;  // PhysicalDisk::id or StorageVolume::id

    static FindingSubject disk(std::string diskID) { return {Kind::disk, std::move(diskID)}; }
    static FindingSubject volume(std::string volumeID) { return {Kind::volume, std::move(volumeID)}; }

    // "disk:" or "volume:" followed by the payload.
    std::string id() const;

    bool operator==(const FindingSubject&) const = default;
};

void to_json(Json& j, const FindingSubject& subject);
void from_json(const Json& j, FindingSubject& subject);

}  // namespace corvel

template <>
struct std::hash<corvel::FindingSubject> {
    std::size_t operator()(const corvel::FindingSubject& subject) const noexcept {
        return std::hash<std::string>{}(subject.id());
    }
};
