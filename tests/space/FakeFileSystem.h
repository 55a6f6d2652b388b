// An in-memory file system for the footprint walkers: clones, hard links, mount points, denied
// folders and unreadable files can be staged without root or special file systems, and the
// calls made are counted.
#pragma once

#include <cerrno>
#include <map>
#include <string>
#include <vector>

#include "space/FileMetadataReading.h"

namespace corvel::spacetest {

class FakeFileSystem : public FileMetadataReading {
public:
    using EntryType = DirectoryReader::EntryType;

    struct Node {
        EntryType type = EntryType::regular;
        std::int32_t device = 1;
        bool isDenied = false;
        bool hasUnknownEntryType = false;                 // listed as `other`, as some file systems do
        std::optional<FileSizeFacts> facts;               // absent: facts cannot be read
        std::optional<std::vector<ExtentRange>> extents;  // absent: extents cannot be read
    };

    FakeFileSystem() { directory("/"); }

    FakeFileSystem& directory(const std::string& path, std::int32_t device = 1) {
        nodes_[path] = Node{EntryType::directory, device, false, false, std::nullopt, std::nullopt};
        return *this;
    }

    FakeFileSystem& deniedDirectory(const std::string& path) {
        directory(path);
        nodes_[path].isDenied = true;
        return *this;
    }

    // A file whose blocks are `extents`; shared ones are what makes it a clone.
    FakeFileSystem& file(const std::string& path, std::int64_t logicalBytes, std::vector<ExtentRange> extents,
                         std::optional<std::int64_t> exclusiveBytes = std::nullopt) {
        std::int64_t allocated = 0;
        for (const auto& range : extents) allocated += range.upper - range.lower + 1;
        FileSizeFacts facts{1, nextFileID_++, 1, std::nullopt, logicalBytes, allocated, exclusiveBytes};
        nodes_[path] = Node{EntryType::regular, 1, false, false, facts, std::move(extents)};
        return *this;
    }

    // Another name for the inode at `existing`.
    FakeFileSystem& hardLink(const std::string& path, const std::string& existing) {
        Node& original = nodes_.at(existing);
        original.facts->linkCount += 1;
        nodes_[path] = original;
        for (auto& [name, node] : nodes_)
            if (node.facts && node.facts->fileID == original.facts->fileID)
                node.facts->linkCount = original.facts->linkCount;
        return *this;
    }

    FakeFileSystem& symlink(const std::string& path) {
        nodes_[path] = Node{EntryType::symlink, 1, false, false, std::nullopt, std::nullopt};
        return *this;
    }

    Node& node(const std::string& path) { return nodes_.at(path); }

    std::vector<DirectoryReader::Entry> readDirectory(const std::string& path) override {
        ++directoryReads;
        const auto found = nodes_.find(path);
        if (found == nodes_.end()) throw DirectoryReader::Failure::other(ENOENT, path);
        if (found->second.type != EntryType::directory) throw DirectoryReader::Failure::other(ENOTDIR, path);
        if (found->second.isDenied) throw DirectoryReader::Failure::accessDenied(path);
        const std::string prefix = path == "/" ? "/" : path + "/";
        std::vector<DirectoryReader::Entry> entries;
        for (auto it = nodes_.upper_bound(prefix); it != nodes_.end(); ++it) {
            if (it->first.compare(0, prefix.size(), prefix) != 0) break;
            const std::string name = it->first.substr(prefix.size());
            if (name.empty() || name.find('/') != std::string::npos) continue;
            entries.push_back({name, it->second.hasUnknownEntryType ? EntryType::other : it->second.type});
        }
        return entries;
    }

    std::optional<PathStatus> status(const std::string& path) override {
        ++statusCalls;
        const auto found = nodes_.find(path);
        if (found == nodes_.end()) return std::nullopt;
        const Node& node = found->second;
        return PathStatus{node.type, node.device, node.facts ? node.facts->allocatedBytes : 0};
    }

    std::optional<FileSizeFacts> facts(const std::string& path) override {
        ++factsCalls;
        const auto found = nodes_.find(path);
        if (found == nodes_.end()) return std::nullopt;
        return found->second.facts;
    }

    std::optional<std::vector<ExtentRange>> physicalExtents(const std::string& path,
                                                            std::int64_t logicalSize) override {
        ++extentCalls;
        if (logicalSize < 1) return std::vector<ExtentRange>{};
        const auto found = nodes_.find(path);
        if (found == nodes_.end()) return std::nullopt;
        return found->second.extents;
    }

    int directoryReads = 0;
    int statusCalls = 0;
    int factsCalls = 0;
    int extentCalls = 0;

private:
    std::map<std::string, Node> nodes_;
    std::uint64_t nextFileID_ = 100;
};

}  // namespace corvel::spacetest
