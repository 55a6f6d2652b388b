// Replays what an account reads from the kernel of a recorded machine: the "mountinfo" and
// "statvfs" keys the discovery replays too, and "swaps", the text of /proc/swaps (one string, or
// a list of lines for readability). Purgeable space comes from the recorded volume list: the
// gap between a volume's "importantAvailableBytes" and its "availableBytes".
//
//   "swaps": ["Filename Type Size Used Priority", "/swapfile file 2097148 0 -2"]
#pragma once

#include "accounting/AccountingSources.h"
#include "common/Json.h"
#include "storage/MountedVolumeRecord.h"
#include "storage/RecordedMountTable.h"

#include <optional>
#include <vector>

namespace corvel {

class RecordedAccountingSources : public AccountingSources {
public:
    // Never throws: a missing or malformed key replays as a source that cannot be read.
    explicit RecordedAccountingSources(const Json& machineDocument);

    std::string mountInfo() override { return mountTable_.mountInfo(); }
    StatvfsFigures statvfs(const std::string& mountPoint) override { return mountTable_.statvfs(mountPoint); }
    std::string swaps() override;
    std::optional<std::int64_t> purgeableBytes(const std::string& mountPoint) override;

private:
    RecordedMountTable mountTable_;
    std::vector<MountedVolumeRecord> volumes_;
    std::optional<std::string> swaps_;
    std::string problem_ = "no swap list recorded";
};

}  // namespace corvel
