// One published release as the release channel describes it: its tag, the build number found in
// its notes, title, notes, date, web page, and the names of the installer package for this
// platform and of the package's checksum file among its assets.
//
//   ReleaseInfo info = ReleaseChannel::parse(ghOutput, Platform::macos);
//   if (!info.packageAsset) ...   // download would fail with missingAsset
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"

#include <optional>
#include <string>

namespace corvel {

struct ReleaseInfo {
    std::string version;               // the release's tag
    std::optional<std::string> build;  // "Build: 202611021" in the notes
    std::string title;
    std::string notes;
    std::optional<TimePoint> publishedAt;
    std::string url;
    std::optional<std::string> packageAsset;
    std::optional<std::string> checksumAsset;

    bool operator==(const ReleaseInfo&) const = default;
};

CORVEL_JSON_RECORD(ReleaseInfo, version, build, title, notes, publishedAt, url, packageAsset, checksumAsset)

}  // namespace corvel
