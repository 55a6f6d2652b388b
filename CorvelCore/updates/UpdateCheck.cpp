#include "updates/UpdateCheck.h"

#include "common/Text.h"
#include "updates/SemVer.h"

namespace corvel {

UpdateCheck UpdateCheck::evaluate(ReleaseInfo release, std::string currentVersion) {
    UpdateCheck check;
    std::string_view tag = trim(release.version);
    if (!tag.empty() && (tag.front() == 'v' || tag.front() == 'V')) tag.remove_prefix(1);
    check.availableVersion = std::string(tag);
    check.isNewer = SemVer::compare(release.version, currentVersion) == VersionOrder::descending;
    for (const auto& line : split(release.notes, '\n')) {
        if (check.notesPreview.size() == previewLines) break;
        const auto text = trim(line);
        if (!text.empty()) check.notesPreview.emplace_back(text);
    }
    check.release = std::move(release);
    check.currentVersion = std::move(currentVersion);
    return check;
}

}  // namespace corvel
