#include "space/ScanReporting.h"

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "space/DirectoryReader.h"
#include "space/FileSizeFacts.h"

#include <fmt/format.h>
#include <algorithm>
#include <array>

namespace corvel::ScanReporting {
namespace {

std::optional<TimePoint> modificationTime(std::int64_t nanoseconds) {
    if (nanoseconds == 0) return std::nullopt;
    return fileTime(nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000);
}

bool isPureASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

SpaceNode fileNode(const std::string& rawPath, std::string_view rawName, std::int64_t logical, std::int64_t allocated,
                   std::int64_t exclusive, std::int64_t modified, const SpaceCatalog& catalog) {
    SpaceNode node;
    node.path = displayText(rawPath);
    node.name = displayText(rawName);
    node.isDirectory = false;
    node.logicalBytes = logical;
    node.allocatedBytes = allocated;
    node.exclusiveBytes = exclusive;
    node.fileCount = 1;
    node.lastModified = modificationTime(modified);
    node.classification = catalog.classify(node.path, false);
    return node;
}

SpaceNode folderNode(const ScanDirectory& folder, const std::string& rawPath, const SpaceCatalog& catalog) {
    SpaceNode node;
    node.path = displayText(rawPath);
    node.name = folder.parent ? displayText(folder.nameView()) : node.path;
    node.isDirectory = true;
    node.logicalBytes = folder.logicalBytes;
    node.allocatedBytes = folder.allocatedBytes;
    node.exclusiveBytes = folder.exclusiveBytes;
    node.fileCount = folder.fileCount;
    node.directoryCount = folder.directoryCount;
    node.lastModified = modificationTime(folder.modifiedNanoseconds);
    node.accessDenied = folder.has(ScanDirectory::denied) || folder.has(ScanDirectory::readFailed);
    node.classification = catalog.classify(node.path, true);
    return node;
}

// One child of a folder in the emitted tree: a subfolder or a kept file.
struct Child {
    const ScanDirectory* folder = nullptr;
    const ScanFile* file = nullptr;
    std::int64_t allocatedBytes = 0;
    std::string_view name;
};

class TreeEmitter {
public:
    TreeEmitter(const SpaceCatalog& catalog, const SpaceTreeOptions& options, SpaceScanSink& sink)
        : catalog_(catalog), options_(options), sink_(sink) {}

    void emitFolder(const ScanDirectory& folder, const std::string& rawPath, int depth) {
        SpaceNode node = folderNode(folder, rawPath, catalog_);
        sink_.beginNode(node);
        if (depth < options_.maxDepth) emitChildren(folder, node, rawPath, depth);
        sink_.endNode();
    }

private:
    void emitChildren(const ScanDirectory& folder, const SpaceNode& node, const std::string& rawPath, int depth) {
        std::vector<Child> children;
        std::int64_t uncounted = 0;
        for (const ScanDirectory* child = folder.firstChild; child; child = child->nextSibling) {
            if (child->isCounted()) {
                children.push_back({child, nullptr, child->allocatedBytes, child->nameView()});
            } else {
                ++uncounted;
            }
        }
        for (std::size_t i = 0; i < folder.keptFileCount; ++i) {
            const ScanFile& file = folder.keptFiles[i];
            children.push_back({nullptr, &file, file.allocatedBytes, file.nameView()});
        }
        std::sort(children.begin(), children.end(), [](const Child& a, const Child& b) {
            if (a.allocatedBytes != b.allocatedBytes) return a.allocatedBytes > b.allocatedBytes;
            return a.name < b.name;
        });
        const double threshold = options_.minimumShare * static_cast<double>(folder.allocatedBytes);
        std::size_t listed = 0;
        std::int64_t logical = 0, allocated = folder.ownAllocatedBytes, exclusive = folder.ownAllocatedBytes;
        std::int64_t files = 0, folders = 0;
        for (const Child& child : children) {
            if (listed >= options_.maxChildren) break;
            const bool denied = child.folder && child.folder->has(ScanDirectory::denied);
            if (static_cast<double>(child.allocatedBytes) < threshold && !denied) break;
            ++listed;
            const std::string childPath = joinPath(rawPath, child.name);
            if (child.folder) {
                emitFolder(*child.folder, childPath, depth + 1);
                logical = checkedAdd(logical, child.folder->logicalBytes);
                allocated = checkedAdd(allocated, child.folder->allocatedBytes);
                exclusive = checkedAdd(exclusive, child.folder->exclusiveBytes);
                files = checkedAdd(files, child.folder->fileCount);
                folders = checkedAdd(folders, child.folder->directoryCount + 1);
            } else {
                const ScanFile& file = *child.file;
                SpaceNode fileEntry = fileNode(childPath, child.name, file.logicalBytes, file.allocatedBytes,
                                               file.exclusiveBytes, file.modifiedNanoseconds, catalog_);
                sink_.beginNode(fileEntry);
                sink_.endNode();
                logical = checkedAdd(logical, file.logicalBytes);
                allocated = checkedAdd(allocated, file.allocatedBytes);
                exclusive = checkedAdd(exclusive, file.exclusiveBytes);
                files = checkedAdd(files, 1);
            }
        }
        const std::int64_t folded =
            static_cast<std::int64_t>(folder.directEntries) - uncounted - static_cast<std::int64_t>(listed);
        if (folded <= 0) return;
        SpaceNode aggregate;
        aggregate.path = node.path;
        aggregate.name = fmt::format("{} smaller {}", folded, folded == 1 ? "item" : "items");
        aggregate.isDirectory = false;
        aggregate.logicalBytes = std::max<std::int64_t>(0, folder.logicalBytes - logical);
        aggregate.allocatedBytes = std::max<std::int64_t>(0, folder.allocatedBytes - allocated);
        // Hard-linked bytes that are exclusive to this folder as a whole belong to no single child.
        aggregate.exclusiveBytes =
            std::clamp<std::int64_t>(folder.exclusiveBytes - exclusive, 0, aggregate.allocatedBytes);
        aggregate.fileCount = std::max<std::int64_t>(0, folder.fileCount - files);
        aggregate.directoryCount = std::max<std::int64_t>(0, folder.directoryCount - folders);
        aggregate.aggregatedItems = folded;
        aggregate.classification = node.classification;
        sink_.beginNode(aggregate);
        sink_.endNode();
    }

    const SpaceCatalog& catalog_;
    const SpaceTreeOptions& options_;
    SpaceScanSink& sink_;
};

std::vector<CategoryTotal> categoryTotals(const ScanTree& tree, const SpaceCatalog& catalog) {
    std::array<CategoryTotal, EnumTable<SpaceCategory>::entries.size()> totals{};
    struct Pending {
        const ScanDirectory* folder;
        SpaceCategory inherited;
        std::size_t parentPathLength;
    };
    std::string path;
    std::vector<Pending> stack{{tree.root, SpaceCategory::other, 0}};
    while (!stack.empty()) {
        const Pending pending = stack.back();
        stack.pop_back();
        const ScanDirectory& folder = *pending.folder;
        path.resize(pending.parentPathLength);
        if (folder.parent) {
            if (path.empty() || path.back() != '/') path.push_back('/');
            path.append(folder.nameView());
        } else {
            path.assign(folder.nameView());
        }
        SpaceCategory category = catalog.verdict(path, true).category;
        if (category == SpaceCategory::other) category = pending.inherited;
        CategoryTotal& total = totals[static_cast<std::size_t>(category)];
        total.allocatedBytes = checkedAdd(total.allocatedBytes, folder.directAllocatedBytes);
        total.exclusiveBytes = checkedAdd(total.exclusiveBytes, folder.directExclusiveBytes);
        total.fileCount = checkedAdd(total.fileCount, folder.directFileCount);
        for (const ScanDirectory* child = folder.firstChild; child; child = child->nextSibling)
            if (child->isCounted()) stack.push_back({child, category, path.size()});
    }
    std::vector<CategoryTotal> result;
    for (const SpaceCategory category : allCases<SpaceCategory>()) {
        CategoryTotal total = totals[static_cast<std::size_t>(category)];
        total.category = category;
        if (total.allocatedBytes > 0 || total.fileCount > 0) result.push_back(total);
    }
    return result;
}

}  // namespace

SpaceNode folderNodeOf(const ScanTree& tree, const ScanDirectory& folder, const SpaceCatalog& catalog) {
    return folderNode(folder, tree.path(&folder), catalog);
}

std::string displayText(std::string_view raw) {
    if (isPureASCII(raw)) return std::string(raw);
    return repairedUTF8(raw);
}

SpaceScanReport report(const ScanTree& tree, const SpaceCatalog& catalog) {
    SpaceScanReport result;
    result.root = displayText(tree.rootPath);
    result.wasCancelled = tree.wasCancelled;
    if (const ScanDirectory* root = tree.root) {
        result.logicalBytes = root->logicalBytes;
        result.allocatedBytes = root->allocatedBytes;
        result.exclusiveBytes = root->exclusiveBytes;
        result.fileCount = root->fileCount;
        result.directoryCount = root->directoryCount;
        result.categoryTotals = categoryTotals(tree, catalog);
    }
    result.deniedDirectories = tree.deniedDirectories;
    result.unreadableFiles = tree.unreadableFiles;
    result.skippedMountPoints = tree.skippedMountPoints;
    result.hardLinkSavedBytes = tree.hardLinkSavedBytes;
    result.cloneSharedBytes = tree.cloneSharedBytes;
    for (const FoundFile& file : tree.largestFiles) {
        result.largestFiles.push_back(fileNode(tree.path(file.folder, file.name), file.name, file.logicalBytes,
                                               file.allocatedBytes, file.exclusiveBytes, file.modifiedNanoseconds,
                                               catalog));
    }
    result.sparseFilesLeftOut = tree.sparseFilesLeftOut;
    for (DuplicateGroup group : tree.duplicates) {
        for (auto& path : group.paths) path = displayText(path);
        result.duplicates.push_back(std::move(group));
    }
    for (const auto& path : tree.credentialsInTrash) result.credentialsInTrash.push_back(displayText(path));
    return result;
}

void emit(const ScanTree& tree, const SpaceCatalog& catalog, const SpaceTreeOptions& options,
          const SpaceScanReport& report, SpaceScanSink& sink) {
    if (tree.root) TreeEmitter(catalog, options, sink).emitFolder(*tree.root, tree.rootPath, 0);
    sink.finish(report);
}

}  // namespace corvel::ScanReporting
