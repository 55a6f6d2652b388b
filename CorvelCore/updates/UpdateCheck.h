// The answer to "is there a newer Velmora?": the newest release, the running version, whether
// the release is newer, and the first lines of its notes for a short announcement.
//
//   UpdateCheck check = UpdateCheck::evaluate(channel.latest(), VELMORA_VERSION);
//   if (check.isNewer) show("Velmora " + check.availableVersion + " is available (you have " + check.currentVersion +
//   ")");
#pragma once

#include "common/Json.h"
#include "updates/ReleaseInfo.h"

#include <string>
#include <vector>

namespace corvel {

struct UpdateCheck {
    ReleaseInfo release;
    std::string currentVersion;
    std::string availableVersion;  // the release's tag without a leading "v"
    bool isNewer = false;
    std::vector<std::string> notesPreview;  // the first non-blank lines of the notes

    static constexpr std::size_t previewLines = 5;

    static UpdateCheck evaluate(ReleaseInfo release, std::string currentVersion);

    bool operator==(const UpdateCheck&) const = default;
};

CORVEL_JSON_RECORD(UpdateCheck, release, currentVersion, availableVersion, isNewer, notesPreview)

}  // namespace corvel
