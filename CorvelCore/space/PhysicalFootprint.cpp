#include "space/PhysicalFootprint.h"

#include <unordered_set>
#include <utility>
#include <vector>

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"

namespace corvel::PhysicalFootprint {

namespace {

using DirectoryReader::EntryType;

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

struct PendingDirectory {
    std::string path;
    Account* area;  // null: outside every area
};

class Walk {
public:
    Walk(const std::set<std::string>& areas, const Progress& progress, FileMetadataReading& files)
        : progress_(progress), files_(files) {
        for (const std::string& area : areas) areas_.try_emplace(standardizedPath(area));
    }

    Result run(const std::string& root, const CancellationCheck& isCancelled) {
        const std::optional<PathStatus> rootStatus = files_.status(root);
        std::vector<PendingDirectory> pending{{root, areaAt(root, nullptr)}};
        bool cancelled = false;
        while (!pending.empty()) {
            if (isCancelled && isCancelled()) {
                cancelled = true;
                break;
            }
            PendingDirectory directory = std::move(pending.back());
            pending.pop_back();
            visit(directory, rootStatus, pending);
        }
        Result result;
        result.total = global_.finished();
        for (auto& [path, account] : areas_) result.areas.emplace(path, account.finished());
        result.deniedDirectories = deniedDirectories_;
        result.wasCancelled = cancelled;
        return result;
    }

private:
    Account* areaAt(const std::string& path, Account* parentArea) {
        const auto found = areas_.find(path);
        return found == areas_.end() ? parentArea : &found->second;
    }

    void visit(const PendingDirectory& directory, const std::optional<PathStatus>& rootStatus,
               std::vector<PendingDirectory>& pending) {
        std::vector<DirectoryReader::Entry> entries;
        try {
            entries = files_.readDirectory(directory.path);
        } catch (const DirectoryReader::Failure&) {
            deniedDirectories_ += 1;
            return;
        }
        for (const DirectoryReader::Entry& entry : entries) {
            const std::string child = childPath(directory.path, entry.name);
            EntryType type = entry.type;
            std::optional<PathStatus> status;
            if (type == EntryType::other) {
                // Some file systems leave the entry type unknown; only then is a status needed
                // to tell files and folders apart.
                status = files_.status(child);
                if (status) type = status->type;
            }
            if (type == EntryType::regular) {
                countFile(child, directory.area);
            } else if (type == EntryType::directory) {
                if (!status) status = files_.status(child);
                // Other volumes and mount points below the root are never entered.
                if (!status || !rootStatus || status->device != rootStatus->device) continue;
                pending.push_back({child, areaAt(child, directory.area)});
            }
            // Symbolic links and special files are never followed or counted.
        }
    }

    void countUnreadable(Account* area) {
        global_.totals.unreadableFiles += 1;
        if (area != nullptr) area->totals.unreadableFiles += 1;
    }

    void countFile(const std::string& path, Account* area) {
        const std::optional<FileSizeFacts> facts = files_.facts(path);
        if (!facts) {
            countUnreadable(area);
            return;
        }
        if (facts->linkCount >= 2 && !countedLinks_.insert(facts->fileID).second) return;
        global_.countFile(*facts);
        if (area != nullptr) area->countFile(*facts);
        if (progress_ && global_.totals.fileCount % progressInterval == 0) progress_(global_.totals.fileCount);

        if (facts->exclusiveBytes && *facts->exclusiveBytes >= facts->allocatedBytes) {
            global_.privateBytes = checkedAdd(global_.privateBytes, facts->allocatedBytes);
            if (area != nullptr) area->privateBytes = checkedAdd(area->privateBytes, facts->allocatedBytes);
            return;
        }
        const auto ranges = files_.physicalExtents(path, facts->logicalBytes);
        if (!ranges) {
            countUnreadable(area);
            return;
        }
        global_.extents.add(*ranges);
        if (area != nullptr) area->extents.add(*ranges);
    }

    const Progress& progress_;
    FileMetadataReading& files_;
    Account global_;
    std::map<std::string, Account> areas_;
    std::unordered_set<std::uint64_t> countedLinks_;
    std::int64_t deniedDirectories_ = 0;
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
}

void from_json(const Json& json, Result& result) {
    result.total = required<Totals>(json, "total");
    result.areas = required<std::map<std::string, Totals>>(json, "areas");
    result.deniedDirectories = required<std::int64_t>(json, "deniedDirectories");
    result.wasCancelled = required<bool>(json, "wasCancelled");
}

std::string standardizedPath(const std::filesystem::path& path) {
    return normalPath(path.string());
}

std::string childPath(const std::string& directory, const std::string& name) {
    return joinPath(directory, name);
}

Result measure(const std::filesystem::path& root, const std::set<std::string>& areas, const Progress& progress,
               const CancellationCheck& isCancelled, FileMetadataReading& files) {
    return Walk(areas, progress, files).run(standardizedPath(root), isCancelled);
}

Result measure(const std::filesystem::path& root, const std::set<std::string>& areas, const Progress& progress,
               const CancellationCheck& isCancelled) {
    SystemFileMetadata files;
    return measure(root, areas, progress, isCancelled, files);
}

}  // namespace corvel::PhysicalFootprint
