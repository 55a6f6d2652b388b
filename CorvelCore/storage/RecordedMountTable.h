// Replays the mount table of a recorded Linux machine: the "mountinfo" text (one string, or a
// list of lines for readability) and the "statvfs" figures per mount point of machine.json.
//
//   "mountinfo": ["27 1 254:0 / / rw,relatime - ext4 /dev/vda rw"],
//   "statvfs": {"/": {"totalBytes": 270553174016, "freeBytes": 97000000000, "availableBytes": 85739208704}}
#pragma once

#include <map>
#include <string>

#include "common/Json.h"
#include "storage/MountTableReading.h"

namespace corvel {

class RecordedMountTable : public MountTableReading {
public:
    // Never throws: a missing or malformed "mountinfo" or "statvfs" key replays as a mount table
    // that cannot be read, with the decoding problem as its error.
    explicit RecordedMountTable(const Json& machineDocument);

    std::string mountInfo() override;
    StatvfsFigures statvfs(const std::string& mountPoint) override;

private:
    void load(const Json& machineDocument);

    std::string problem_;
    bool hasMountInfo_ = false;
    std::string mountInfo_;
    std::map<std::string, StatvfsFigures> figures_;
};

}  // namespace corvel
