#include "cleanup/CleanupSuggester.h"

#include "common/PathText.h"
#include "space/CleanupRisk.h"
#include "space/FileSizeFacts.h"
#include "space/ScanReporting.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace corvel::CleanupSuggester {
namespace {

std::optional<TimePoint> modificationTime(std::int64_t nanoseconds) {
    if (nanoseconds == 0) return std::nullopt;
    return fileTime(nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000);
}

bool fullyRead(const ScanDirectory& folder) {
    return !folder.has(ScanDirectory::denied) && !folder.has(ScanDirectory::readFailed) &&
           !folder.has(ScanDirectory::notRead);
}

}  // namespace

Step step(CleanupRisk risk, std::optional<TimePoint> lastModified, std::int64_t exclusiveBytes, bool isFullyRead,
          TimePoint now, std::chrono::seconds minimumAge) {
    if (!isFullyRead) return Step::leave;
    if (!isCleanupEligible(risk)) return Step::lookInside;
    // Without a date nothing proves the item untouched, unless no age was asked for.
    const bool oldEnough = lastModified ? now - *lastModified >= minimumAge : minimumAge.count() == 0;
    if (oldEnough && exclusiveBytes > 0) return Step::propose;
    return Step::lookInside;
}

std::vector<CleanupSuggestion> fromScan(const ScanTree& tree, const SpaceCatalog& catalog, TimePoint now,
                                        const CleanupSuggestionOptions& options) {
    std::vector<const ScanDirectory*> proposed;
    if (tree.root) {
        struct Pending {
            const ScanDirectory* folder;
            std::size_t parentPathLength;
        };
        std::string path;
        std::vector<Pending> stack{{tree.root, 0}};
        while (!stack.empty()) {
            const auto [folder, parentPathLength] = stack.back();
            stack.pop_back();
            path.resize(parentPathLength);
            if (folder->parent) {
                if (path.empty() || path.back() != '/') path.push_back('/');
                path.append(folder->nameView());
            } else {
                path.assign(folder->nameView());
            }
            const auto verdict = catalog.verdict(path, true);
            const auto next = step(verdict.risk, modificationTime(folder->modifiedNanoseconds), folder->exclusiveBytes,
                                   fullyRead(*folder), now, options.minimumAge);
            if (next == Step::propose) proposed.push_back(folder);
            if (next != Step::lookInside) continue;
            for (const ScanDirectory* child = folder->firstChild; child; child = child->nextSibling)
                if (child->isCounted()) stack.push_back({child, path.size()});
        }
    }
    std::sort(proposed.begin(), proposed.end(), [&](const ScanDirectory* a, const ScanDirectory* b) {
        if (a->exclusiveBytes != b->exclusiveBytes) return a->exclusiveBytes > b->exclusiveBytes;
        return tree.path(a) < tree.path(b);
    });
    if (proposed.size() > options.count) proposed.resize(options.count);

    std::vector<CleanupSuggestion> suggestions;
    for (const ScanDirectory* folder : proposed) {
        auto candidate = CleanupCandidate::from(ScanReporting::folderNodeOf(tree, *folder, catalog));
        // A scan names its root by the whole path; a candidate's name is the last component.
        candidate.name = lastComponent(candidate.path);
        auto reason = why(candidate, now);
        suggestions.push_back({std::move(candidate), std::move(reason)});
    }
    return suggestions;
}

std::string why(const CleanupCandidate& candidate, TimePoint now) {
    const auto& classification = candidate.classification;
    std::string text = fmt::format("{}, {}", rawValue(classification.category), rawValue(classification.risk));
    if (classification.application) text += " (" + *classification.application + ")";
    if (candidate.lastModified) {
        const auto days = std::chrono::duration_cast<std::chrono::hours>(now - *candidate.lastModified).count() / 24;
        text += fmt::format(": untouched for {} day{}", days, days == 1 ? "" : "s");
    }
    return text;
}

std::optional<std::chrono::seconds> parseAge(std::string_view text) {
    if (text == "0") return std::chrono::seconds(0);
    if (text.size() < 2) return std::nullopt;
    std::int64_t seconds = 0;
    switch (text.back()) {
        case 'h':
            seconds = 3600;
            break;
        case 'd':
            seconds = 24 * 3600;
            break;
        case 'w':
            seconds = 7 * 24 * 3600;
            break;
        default:
            return std::nullopt;
    }
    const auto digits = text.substr(0, text.size() - 1);
    std::int64_t count = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    if (error != std::errc{} || end != digits.data() + digits.size() || count < 0) return std::nullopt;
    // A century is as old as anything on a disk gets; beyond that the number is a typo.
    if (count > std::int64_t{100} * 366 * 24 * 3600 / seconds) return std::nullopt;
    return std::chrono::seconds(count * seconds);
}

}  // namespace corvel::CleanupSuggester
