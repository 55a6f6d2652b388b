// An in-memory file system for the footprint walks: clones, hard links, mount points (other
// devices and bind mounts), denied folders, broken listings and unreadable files can be staged
// without root or special file systems, and the calls made are counted. Handles are numbers
// standing for the folder they opened.
#pragma once

#include <cerrno>
#include <map>
#include <string>
#include <vector>

#include "common/PathText.h"
#include "space/FileMetadataReading.h"

namespace corvel::spacetest {

class FakeFileSystem : public FileMetadataReading {
public:
    using EntryType = DirectoryReader::EntryType;

    struct Node {
        EntryType type = EntryType::regular;
        std::uint64_t device = 1;
        std::uint64_t mountID = 1;
        int openError = 0;                                // the folder cannot be opened (EACCES, …)
        int listError = 0;                                // the listing breaks off after its entries
        bool hasUnknownEntryType = false;                 // listed as `other`, as some file systems do
        std::optional<FileSizeFacts> facts;               // absent: facts cannot be read
        std::optional<std::vector<ExtentRange>> extents;  // absent: extents cannot be read
    };

    FakeFileSystem() { directory("/"); }

    FakeFileSystem& directory(const std::string& path, std::uint64_t device = 1, std::uint64_t mountID = 1) {
        nodes_[path] = Node{EntryType::directory, device, mountID, 0, 0, false, std::nullopt, std::nullopt};
        return *this;
    }

    FakeFileSystem& deniedDirectory(const std::string& path, int error = EACCES) {
        directory(path);
        nodes_[path].openError = error;
        return *this;
    }

    // A file whose blocks are `extents`; shared ones are what makes it a clone.
    FakeFileSystem& file(const std::string& path, std::int64_t logicalBytes, std::vector<ExtentRange> extents,
                         std::optional<std::int64_t> exclusiveBytes = std::nullopt) {
        std::int64_t allocated = 0;
        for (const auto& range : extents) allocated += range.upper - range.lower + 1;
        FileSizeFacts facts{1, nextFileID_++, 1, std::nullopt, logicalBytes, allocated, exclusiveBytes};
        nodes_[path] = Node{EntryType::regular, 1, 1, 0, 0, false, facts, std::move(extents)};
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
        nodes_[path] = Node{EntryType::symlink, 1, 1, 0, 0, false, std::nullopt, std::nullopt};
        return *this;
    }

    Node& node(const std::string& path) { return nodes_.at(path); }

    int openFolder(const std::string& path, int& error) override { return open(path, error); }

    int openFolderAt(int folder, const std::string& name, int& error) override {
        return open(joinPath(handles_.at(folder), name), error);
    }

    void close(int handle) override {
        handles_.erase(handle);
        ++closes;
    }

    bool list(int folder, std::vector<DirectoryReader::Entry>& entries, int& error) override {
        ++directoryReads;
        const std::string& path = handles_.at(folder);
        const std::string prefix = path == "/" ? "/" : path + "/";
        for (auto it = nodes_.upper_bound(prefix); it != nodes_.end(); ++it) {
            if (it->first.compare(0, prefix.size(), prefix) != 0) break;
            const std::string name = it->first.substr(prefix.size());
            if (name.empty() || name.find('/') != std::string::npos) continue;
            entries.push_back({name, it->second.hasUnknownEntryType ? EntryType::other : it->second.type});
        }
        error = nodes_.at(path).listError;
        return error == 0;
    }

    std::optional<PathStatus> status(int handle, int& error) override { return statusOf(handles_.at(handle), error); }

    std::optional<PathStatus> statusAt(int folder, const std::string& name, int& error) override {
        return statusOf(joinPath(handles_.at(folder), name), error);
    }

    std::optional<PathStatus> statusOfTarget(const std::string& path, int& error) override {
        return statusOf(path, error);
    }

    std::optional<FileSizeFacts> factsAt(int folder, const std::string& name, int& error) override {
        ++factsCalls;
        const auto found = nodes_.find(joinPath(handles_.at(folder), name));
        if (found == nodes_.end() || !found->second.facts) error = found == nodes_.end() ? ENOENT : EIO;
        return found == nodes_.end() ? std::nullopt : found->second.facts;
    }

    std::optional<std::vector<ExtentRange>> physicalExtentsAt(int folder, const std::string& name,
                                                              std::int64_t logicalSize, int& error) override {
        ++extentCalls;
        if (logicalSize < 1) return std::vector<ExtentRange>{};
        const auto found = nodes_.find(joinPath(handles_.at(folder), name));
        if (found == nodes_.end() || !found->second.extents) error = found == nodes_.end() ? ENOENT : EOPNOTSUPP;
        return found == nodes_.end() ? std::nullopt : found->second.extents;
    }

    std::size_t openHandles() const { return handles_.size(); }

    int directoryReads = 0;
    int statusCalls = 0;
    int factsCalls = 0;
    int extentCalls = 0;
    int closes = 0;

private:
    int open(const std::string& path, int& error) {
        const auto found = nodes_.find(path);
        error = found == nodes_.end() ? ENOENT : found->second.type != EntryType::directory ? ENOTDIR
                                                                                            : found->second.openError;
        if (error != 0) return -1;
        handles_[nextHandle_] = path;
        return nextHandle_++;
    }

    std::optional<PathStatus> statusOf(const std::string& path, int& error) {
        ++statusCalls;
        const auto found = nodes_.find(path);
        if (found == nodes_.end()) {
            error = ENOENT;
            return std::nullopt;
        }
        const Node& node = found->second;
        return PathStatus{node.type, node.device, node.facts ? node.facts->allocatedBytes : 0, node.mountID};
    }

    std::map<std::string, Node> nodes_;
    std::map<int, std::string> handles_;
    int nextHandle_ = 3;
    std::uint64_t nextFileID_ = 100;
};

}  // namespace corvel::spacetest
