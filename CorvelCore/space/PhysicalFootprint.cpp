#include "space/PhysicalFootprint.h"

#include <unordered_set>
#include <utility>
#include <vector>

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"
#include "space/FolderWalk.h"

namespace corvel::PhysicalFootprint {

namespace {

// Running state of one accounting scope (the whole tree, or one area).
struct Account {
    Totals totals;
    ExtentUnion extents;
    // Bytes of files that share no block with any other file: known to be unique without
    // asking where they lie, which spares an extent query for almost every file.
    std::int64_t privateBytes = 0;

    void countFile(const FileSizeFacts& facts) {
        totals.fileCount += 1;
        totals.logicalBytes = checkedAdd(totals.logicalBytes, facts.logicalBytes);
        totals.allocatedBytes = checkedAdd(totals.allocatedBytes, facts.allocatedBytes);
    }

    Totals finished() {
        extents.compact();
        Totals result = totals;
        result.uniquePhysicalBytes = checkedAdd(extents.bytes(), privateBytes);
        return result;
    }
};

class Measurement final : public FolderWalk::Visitor {
public:
    Measurement(const std::set<std::string>& areas, FileMetadataReading& files) : files_(files) {
        for (const std::string& area : areas) areas_.try_emplace(standardizedPath(area));
        for (auto& [path, account] : areas_) tags_.push_back(&account);
    }

    std::size_t enterFolder(const std::string& path, std::size_t parentTag) override {
        const auto found = areas_.find(path);
        if (found == areas_.end()) return parentTag;
        for (std::size_t i = 0; i < tags_.size(); ++i)
            if (tags_[i] == &found->second) return i + 1;
        return parentTag;
    }

    FolderWalk::FileOutcome file(int folder, const std::string& name, const std::optional<PathStatus>&,
                                 std::size_t tag) override {
        Account* area = tag == 0 ? nullptr : tags_[tag - 1];
        int error = 0;
        const std::optional<FileSizeFacts> facts = files_.factsAt(folder, name, error);
        if (!facts) {
            countUnreadable(area);
            return {false, 0, error};
        }
        if (facts->linkCount >= 2 && !countedLinks_.insert(facts->fileID).second) return {};
        global_.countFile(*facts);
        if (area != nullptr) area->countFile(*facts);

        if (facts->exclusiveBytes && *facts->exclusiveBytes >= facts->allocatedBytes) {
            global_.privateBytes = checkedAdd(global_.privateBytes, facts->allocatedBytes);
            if (area != nullptr) area->privateBytes = checkedAdd(area->privateBytes, facts->allocatedBytes);
            return {true, facts->allocatedBytes, 0};
        }
        const auto ranges = files_.physicalExtentsAt(folder, name, facts->logicalBytes, error);
        if (!ranges) {
            countUnreadable(area);
            return {true, facts->allocatedBytes, error};
        }
        global_.extents.add(*ranges);
        if (area != nullptr) area->extents.add(*ranges);
        return {true, facts->allocatedBytes, 0};
    }

    Result finish(FolderWalk::Outcome&& outcome) {
        Result result;
        result.total = global_.finished();
        for (auto& [path, account] : areas_) result.areas.emplace(path, account.finished());
        result.deniedDirectories = outcome.deniedDirectories;
        result.wasCancelled = outcome.wasCancelled;
        result.failures = std::move(outcome.failures);
        result.rootError = std::move(outcome.rootError);
        return result;
    }

private:
    void countUnreadable(Account* area) {
        global_.totals.unreadableFiles += 1;
        if (area != nullptr) area->totals.unreadableFiles += 1;
    }

    FileMetadataReading& files_;
    Account global_;
    std::map<std::string, Account> areas_;
    std::vector<Account*> tags_;  // tag i + 1 is area i
    std::unordered_set<std::uint64_t> countedLinks_;
};

}  // namespace

void to_json(Json& json, const Totals& totals) {
    json = Json{{"logicalBytes", totals.logicalBytes},
                {"allocatedBytes", totals.allocatedBytes},
                {"uniquePhysicalBytes", totals.uniquePhysicalBytes},
                {"fileCount", totals.fileCount},
                {"unreadableFiles", totals.unreadableFiles}};
}

void from_json(const Json& json, Totals& totals) {
    totals.logicalBytes = required<std::int64_t>(json, "logicalBytes");
    totals.allocatedBytes = required<std::int64_t>(json, "allocatedBytes");
    totals.uniquePhysicalBytes = required<std::int64_t>(json, "uniquePhysicalBytes");
    totals.fileCount = required<std::int64_t>(json, "fileCount");
    totals.unreadableFiles = required<std::int64_t>(json, "unreadableFiles");
}

void to_json(Json& json, const Result& result) {
    json = Json::object();
    json["total"] = result.total;
    json["areas"] = Json::object();
    for (const auto& [path, totals] : result.areas) json["areas"][path] = totals;
    json["deniedDirectories"] = result.deniedDirectories;
    json["wasCancelled"] = result.wasCancelled;
    json["failures"] = result.failures;
    putOptional(json, "rootError", result.rootError);
}

void from_json(const Json& json, Result& result) {
    result.total = required<Totals>(json, "total");
    result.areas = required<std::map<std::string, Totals>>(json, "areas");
    result.deniedDirectories = required<std::int64_t>(json, "deniedDirectories");
    result.wasCancelled = required<bool>(json, "wasCancelled");
    result.failures = valueOr<WalkFailures>(json, "failures", {});
    result.rootError = optionalValue<std::string>(json, "rootError");
}

std::string standardizedPath(const std::filesystem::path& path) {
    return normalPath(path.string());
}

std::string childPath(const std::string& directory, const std::string& name) {
    return joinPath(directory, name);
}

Result measure(const std::filesystem::path& root, const std::set<std::string>& areas, ScanProgress& progress,
               const CancellationCheck& isCancelled, FileMetadataReading& files) {
    Measurement measurement(areas, files);
    Result result = measurement.finish(FolderWalk::run(standardizedPath(root), measurement, files, progress, isCancelled));
    progress.markFinished();
    return result;
}

Result measure(const std::filesystem::path& root, const std::set<std::string>& areas, ScanProgress& progress,
               const CancellationCheck& isCancelled) {
    SystemFileMetadata files;
    return measure(root, areas, progress, isCancelled, files);
}

}  // namespace corvel::PhysicalFootprint
