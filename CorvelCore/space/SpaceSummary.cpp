#include "space/SpaceSummary.h"

#include "common/AtomicFile.h"

#include <algorithm>

namespace corvel {
namespace {

struct Candidate {
    const SpaceNode* node;
    std::size_t end;  // candidates [index + 1, end) lie inside this one
};

// Collects, in pre-order, the nodes where the kind of data changes, remembering for each how
// far its own descendants reach in the list.
void collect(const SpaceNode& node, int depth, SpaceCategory parentCategory, std::vector<Candidate>& out) {
    const std::size_t index = out.size();
    const bool isCandidate = depth >= 1 && !node.isAggregate() &&
                             (depth == 1 || node.classification.category != parentCategory);
    if (isCandidate) out.push_back({&node, 0});
    for (const auto& child : node.children) collect(child, depth + 1, node.classification.category, out);
    if (isCandidate) out[index].end = out.size();
}

}  // namespace

std::vector<SpaceNode> SpaceSummary::selectTopConsumers(const SpaceNode& tree, std::size_t count) {
    std::vector<Candidate> candidates;
    collect(tree, 0, tree.classification.category, candidates);
    std::vector<const SpaceNode*> innermost;
    for (std::size_t i = 0; i < candidates.size(); ++i)
        if (candidates[i].end == i + 1) innermost.push_back(candidates[i].node);
    std::stable_sort(innermost.begin(), innermost.end(), [](const SpaceNode* a, const SpaceNode* b) {
        return a->allocatedBytes > b->allocatedBytes;
    });
    std::vector<SpaceNode> result;
    for (const SpaceNode* node : innermost) {
        if (result.size() >= count) break;
        SpaceNode copy = *node;
        copy.children.clear();
        result.push_back(std::move(copy));
    }
    return result;
}

SpaceSummary SpaceSummary::fromScan(const SpaceNode& tree, const SpaceScanReport& report, TimePoint scannedAt,
                                    std::size_t count) {
    SpaceSummary summary;
    summary.root = report.root;
    summary.scannedAt = scannedAt;
    summary.wasCancelled = report.wasCancelled;
    summary.allocatedBytes = report.allocatedBytes;
    summary.topConsumers = selectTopConsumers(tree, count);
    summary.credentialsInTrash = report.credentialsInTrash;
    return summary;
}

std::optional<SpaceSummary> SpaceSummary::load(const std::filesystem::path& dataDir, std::string* problem) {
    const auto path = dataDir / fileName;
    if (problem) problem->clear();
    try {
        const auto text = AtomicFile::read(path);
        if (!text) return std::nullopt;
        return parseJsonText(*text, path.string()).get<SpaceSummary>();
    } catch (const std::exception& error) {
        if (problem) {
            const std::string message = error.what();
            *problem = message.find(path.string()) == std::string::npos ? path.string() + ": " + message : message;
        }
        return std::nullopt;
    }
}

void SpaceSummary::save(const std::filesystem::path& dataDir) const {
    const Json document = *this;
    AtomicFile::write(dataDir / fileName, document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

void to_json(Json& j, const SpaceSummary& summary) {
    j = Json::object();
    j["root"] = summary.root;
    j["scannedAt"] = summary.scannedAt;
    j["wasCancelled"] = summary.wasCancelled;
    j["allocatedBytes"] = summary.allocatedBytes;
    j["topConsumers"] = summary.topConsumers;
    j["credentialsInTrash"] = summary.credentialsInTrash;
}

void from_json(const Json& j, SpaceSummary& summary) {
    summary.root = required<std::string>(j, "root");
    summary.scannedAt = required<TimePoint>(j, "scannedAt");
    summary.wasCancelled = valueOr<bool>(j, "wasCancelled", false);
    summary.allocatedBytes = valueOr<std::int64_t>(j, "allocatedBytes", 0);
    summary.topConsumers = required<std::vector<SpaceNode>>(j, "topConsumers");
    summary.credentialsInTrash = valueOr<std::vector<std::string>>(j, "credentialsInTrash", {});
}

}  // namespace corvel
