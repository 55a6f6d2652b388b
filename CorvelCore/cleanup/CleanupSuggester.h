// The step beyond measuring: from one scan, the items worth simulating. Only what the catalogue
// positively knows to be regenerable (green or yellow) and what nobody has touched for a while
// (nothing below it modified within the minimum age) is proposed, biggest exclusive bytes first.
// Gray and red items are never proposed; the walk looks inside them for known items instead.
//
//   auto age = CleanupSuggester::parseAge("30d");     // 30 days
//   auto suggestions = CleanupSuggester::fromScan(tree, catalog, now, {*age, 20});
//   suggestions[0].why;    // "Caches, green (pip): untouched for 92 days"
#pragma once

#include "cleanup/CleanupSuggestion.h"
#include "common/ISO8601.h"
#include "space/CleanupRisk.h"
#include "space/ScanTree.h"
#include "space/SpaceCatalog.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct CleanupSuggestionOptions {
    std::chrono::seconds minimumAge = std::chrono::hours(24 * 30);
    std::size_t count = 20;
};

namespace CleanupSuggester {

// What the walk does with one folder.
enum class Step { propose, lookInside, leave };

// Green or yellow and untouched for `minimumAge` with bytes to free: propose. Green or yellow but
// recent, gray, or red: look inside. Not fully readable: leave (its figures would be too low).
Step step(CleanupRisk risk, std::optional<TimePoint> lastModified, std::int64_t exclusiveBytes, bool fullyRead,
          TimePoint now, std::chrono::seconds minimumAge);

// The proposals of a scan, biggest exclusive bytes first, at most `options.count`.
std::vector<CleanupSuggestion> fromScan(const ScanTree& tree, const SpaceCatalog& catalog, TimePoint now,
                                        const CleanupSuggestionOptions& options);

// Why an item was proposed: its category, risk, owner and age.
std::string why(const CleanupCandidate& candidate, TimePoint now);

// "30d", "12h", "2w" or "0": a minimum age; absent for anything else.
std::optional<std::chrono::seconds> parseAge(std::string_view text);

}  // namespace CleanupSuggester
}  // namespace corvel
