// Turns everything known about the machine (snapshot, diagnostic report, device topologies,
// Docker inventory, the last space scan's largest consumers, verified migrations, credential-like
// files in the Trash, what local snapshots hold) into a short ranked list of insights. A pure
// function of its input: it reads nothing, changes nothing and never throws; a rule whose data is
// missing does not fire.
//
//   InsightEngine::Input input{.snapshot = snapshot, .report = report};
//   input.topConsumers = summary->topConsumers;
//   for (const auto& insight : InsightEngine::insights(input, InsightEngine::defaultMinimumBytes)) { … }
#pragma once

#include "accounting/SnapshotShare.h"
#include "common/Platform.h"
#include "diagnostics/DeviceTopology.h"
#include "diagnostics/DiagnosticReport.h"
#include "docker/DockerInventory.h"
#include "insights/Insight.h"
#include "space/SpaceNode.h"
#include "storage/StorageSnapshot.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

// A tree copied to another volume whose copy was verified by checksum.
struct VerifiedMigration {
    std::string root;
    std::int64_t bytes = 0;

    bool operator==(const VerifiedMigration&) const = default;
};

namespace InsightEngine {

// Space suggestions below this are not worth a person's attention.
inline constexpr std::int64_t defaultMinimumBytes = 1000000000;

struct Input {
    StorageSnapshot snapshot;
    DiagnosticReport report;
    std::vector<DeviceTopology> topologies;
    std::optional<DockerInventory> docker;
    std::vector<SpaceNode> topConsumers;  // largest first
    std::vector<VerifiedMigration> verifiedMigrations;
    std::vector<std::string> credentialsInTrash;
    std::vector<SnapshotShare> snapshotShares;  // volumes whose snapshots have a known size
    Platform platform = Platform::macos;        // whose file systems the texts speak of
};

// Every insight that fires, most severe first, then largest first; ties keep rule order.
std::vector<Insight> insights(const Input& input, std::int64_t minimumBytes);

}  // namespace InsightEngine
}  // namespace corvel
