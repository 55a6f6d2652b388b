// What the last space scan leaves behind for the insights: its largest consumers and the
// credential-like files it found in a trash, saved as "space-summary.json" in the data folder.
// The file is replaced whole on every save; a missing file means no scan has run yet, and an
// unreadable one is treated the same way (and overwritten by the next scan).
//
//   SpaceSummary::fromScan(tree, report, now).save(dataDir);
//   if (auto summary = SpaceSummary::load(dataDir)) { input.topConsumers = summary->topConsumers; }
//
// Top consumers are the places where the kind of data changes (a child of the root, or a node
// whose category differs from its parent's), innermost first: a project's node_modules is
// listed rather than the projects folder holding it. They carry no children.
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "space/SpaceNode.h"
#include "space/SpaceScanReport.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct SpaceSummary {
    std::string root;
    TimePoint scannedAt;
    bool wasCancelled = false;
    std::int64_t allocatedBytes = 0;
    std::vector<SpaceNode> topConsumers;  // largest first
    std::vector<std::string> credentialsInTrash;

    static constexpr const char* fileName = "space-summary.json";
    static constexpr std::size_t consumerCount = 20;

    // The summary of a scan whose tree was built with SpaceTreeBuilder.
    static SpaceSummary fromScan(const SpaceNode& tree, const SpaceScanReport& report, TimePoint scannedAt,
                                 std::size_t count = consumerCount);
    static std::vector<SpaceNode> selectTopConsumers(const SpaceNode& tree, std::size_t count);

    // Absent when there is no summary yet or it cannot be read; then `problem`, when given, says
    // why (naming the file) or is left empty when the file simply does not exist.
    static std::optional<SpaceSummary> load(const std::filesystem::path& dataDir, std::string* problem = nullptr);
    // Atomic replace; throws FileError naming the file.
    void save(const std::filesystem::path& dataDir) const;

    bool operator==(const SpaceSummary&) const = default;
};

void to_json(Json& j, const SpaceSummary& summary);
void from_json(const Json& j, SpaceSummary& summary);

}  // namespace corvel
