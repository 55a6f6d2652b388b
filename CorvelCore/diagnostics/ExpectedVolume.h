// A volume the user's setup depends on (a workspace, a container-data location). Kept in the
// settings; the health view reports it missing when no mounted volume carries its id.
//
//   HealthAssessment::ExpectedVolume{"6A1F…", "Work SSD", "the workspace"}
#pragma once

#include "common/Json.h"

#include <string>

namespace corvel::HealthAssessment {

struct ExpectedVolume {
    std::string volumeID;  // the volume UUID a mounted StorageVolume::id must equal
    std::string name;      // how to call it
    std::string reason;    // what it is used as, e.g. "the workspace"

    bool operator==(const ExpectedVolume&) const = default;
};

CORVEL_JSON_RECORD(ExpectedVolume, volumeID, name, reason)

}  // namespace corvel::HealthAssessment
