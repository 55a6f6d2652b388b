#include "cleanup/CleanupPlanner.h"

#include "common/PathText.h"
#include "common/Text.h"
#include "common/UUID.h"
#include "space/CleanupRisk.h"
#include "space/SpaceCategory.h"

#include <algorithm>
#include <numeric>

namespace corvel::CleanupPlanner {
namespace {

// `path` is `item` or lies below it. A plain prefix test with the "/" written out, so that
// /a/bc never counts as inside /a/b.
bool isAtOrBelow(const std::string& path, const std::string& item) {
    return path == item || (path.size() > item.size() && path.starts_with(item) && path[item.size()] == '/');
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && toLower(a) == toLower(b);
}

}  // namespace

std::vector<CleanupCandidate> withoutNestedItems(const std::vector<CleanupCandidate>& selection) {
    // Shortest first, so that a folder is kept before anything inside it is looked at; equal
    // lengths keep their selection order, so of two copies of one path the first one stays.
    std::vector<std::size_t> order(selection.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return selection[a].path.size() < selection[b].path.size(); });
    std::vector<bool> keep(selection.size(), false);
    std::vector<std::size_t> kept;
    for (const std::size_t index : order) {
        const auto& path = selection[index].path;
        const bool nested = std::any_of(kept.begin(), kept.end(),
                                        [&](std::size_t other) { return isAtOrBelow(path, selection[other].path); });
        if (nested) continue;
        kept.push_back(index);
        keep[index] = true;
    }
    std::vector<CleanupCandidate> result;
    for (std::size_t i = 0; i < selection.size(); ++i)
        if (keep[i]) result.push_back(selection[i]);
    return result;
}

std::optional<std::string> exclusionReason(const CleanupCandidate& candidate,
                                           const std::vector<std::string>& inUsePaths,
                                           const std::set<std::string>& runningApplications,
                                           const std::vector<std::string>& credentialPaths) {
    const auto& classification = candidate.classification;
    if (classification.risk == CleanupRisk::red || classification.risk == CleanupRisk::gray)
        return "Classified " + toUpper(rawValue(classification.risk)) + ": " +
               std::string(explanation(classification.risk));

    std::vector<std::string> credentials;
    for (const auto& path : credentialPaths)
        if (isAtOrBelow(path, candidate.path)) credentials.push_back(path);
    if (!credentials.empty()) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < credentials.size() && i < 3; ++i) names.push_back(lastComponent(credentials[i]));
        // The ellipsis stands even after three names or fewer: the sentence reads the same
        // whether or not the list was cut, so nobody takes it for the complete list.
        return "Contains " + std::to_string(credentials.size()) + " file(s) that look like credentials (" +
               join(names, ", ") + "\u2026). Recover what you still need before emptying; contents were not read.";
    }

    for (const auto& path : inUsePaths)
        if (isAtOrBelow(path, candidate.path)) return "In use: " + path + " is open by a running process.";

    if (const auto& owner = classification.application) {
        const bool running = std::any_of(runningApplications.begin(), runningApplications.end(),
                                         [&](const std::string& name) { return equalIgnoringCase(name, *owner); });
        if (running) return *owner + " is running. Quit it before cleaning its data.";
    }

    if (classification.category == SpaceCategory::projects || classification.category == SpaceCategory::databases)
        return std::string("Project and database data is never removed based on size.");
    return std::nullopt;
}

CleanupSimulation simulate(const std::vector<CleanupCandidate>& selection, const std::string& volumeName,
                           std::int64_t volumeFree, const std::vector<std::string>& inUsePaths,
                           const std::set<std::string>& runningApplications,
                           const std::vector<std::string>& credentialPaths, TimePoint now) {
    CleanupSimulation simulation;
    simulation.id = UUID::random();
    simulation.createdAt = now;
    simulation.volumeName = volumeName;
    simulation.volumeFreeBefore = volumeFree;
    for (auto& candidate : withoutNestedItems(selection)) {
        if (auto reason = exclusionReason(candidate, inUsePaths, runningApplications, credentialPaths)) {
            simulation.excluded.push_back({std::move(candidate), std::move(*reason)});
        } else {
            simulation.eligible.push_back(std::move(candidate));
        }
    }

    simulation.checks = {simulationOnlyCheck, exclusiveBytesCheck};
    if (!simulation.excluded.empty())
        simulation.checks.push_back(std::to_string(simulation.excluded.size()) + " item(s) excluded by safety rules.");
    const bool anyYellow =
        std::any_of(simulation.eligible.begin(), simulation.eligible.end(),
                    [](const CleanupCandidate& c) { return c.classification.risk == CleanupRisk::yellow; });
    if (anyYellow) simulation.checks.push_back(yellowReviewCheck);
    return simulation;
}

}  // namespace corvel::CleanupPlanner
