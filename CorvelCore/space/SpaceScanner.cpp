#include "space/SpaceScanner.h"

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"
#include "space/BlockSharing.h"
#include "space/CredentialNames.h"
#include "space/DuplicateFinder.h"
#include "space/ScanDirectoryAccess.h"

#include <fnmatch.h>
#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace corvel::SpaceScanner {
namespace {

namespace Access = ScanDirectoryAccess;
using EntryType = DirectoryReader::EntryType;

// A folder handle shared by the jobs of its subfolders; closed when the last one has opened.
struct OpenParent {
    int handle = -1;
    std::atomic<std::uint32_t> waiting{0};
};

struct Job {
    ScanDirectory* folder = nullptr;
    OpenParent* parent = nullptr;
    int handle = -1;  // already open (the root), else -1
};

struct InodeKey {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool operator==(const InodeKey&) const = default;
};

struct InodeKeyHash {
    std::size_t operator()(const InodeKey& key) const noexcept {
        return std::hash<std::uint64_t>{}(key.inode * 0x9E3779B97F4A7C15ULL ^ key.device);
    }
};

// Every name of a hard-linked inode met in the walk; its bytes count at the first one only.
struct LinkedInode {
    std::int64_t allocatedBytes = 0;
    std::uint64_t linkCount = 0;
    std::vector<ScanDirectory*> folders;
};

class HardLinkTable {
public:
    // True for the first name of the inode met in the walk.
    bool firstSighting(const Access::Status& status, ScanDirectory* folder) {
        const InodeKey key{status.device, status.inode};
        Shard& shard = shards_[InodeKeyHash{}(key) % shards_.size()];
        std::lock_guard lock(shard.mutex);
        auto [entry, inserted] = shard.inodes.try_emplace(key);
        if (inserted) {
            entry->second.allocatedBytes = status.allocatedBytes;
            entry->second.linkCount = status.linkCount;
        }
        entry->second.folders.push_back(folder);
        return inserted;
    }

    template <class Visit>
    void forEach(Visit visit) const {
        for (const auto& shard : shards_)
            for (const auto& [key, inode] : shard.inodes) visit(inode);
    }

private:
    struct Shard {
        std::mutex mutex;
        std::unordered_map<InodeKey, LinkedInode, InodeKeyHash> inodes;
    };
    std::array<Shard, 32> shards_;
};

// A file of the folder being read, before the largest are picked to be kept by name.
struct PendingFile {
    std::uint32_t nameOffset = 0;
    std::uint16_t nameLength = 0;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t modifiedNanoseconds = 0;
};

struct PendingDuplicate {
    const ScanDirectory* folder = nullptr;
    const char* name = nullptr;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t firstPhysicalOffset = -1;
};

bool smallerFile(const FoundFile& a, const FoundFile& b) {
    if (a.allocatedBytes != b.allocatedBytes) return a.allocatedBytes > b.allocatedBytes;
    return a.name < b.name;
}

// What one walker thread owns: its arena, its buffers and its share of the findings.
struct Worker {
    ScanArena* arena = nullptr;
    std::vector<std::byte> buffer = std::vector<std::byte>(64 * 1024);
    std::vector<Access::Entry> entries;
    std::vector<PendingFile> files;
    std::string fileNames;
    std::vector<Job> newJobs;
    std::vector<FoundFile> largest;  // a heap, smallest on top
    std::vector<PendingDuplicate> duplicates;
    std::vector<std::pair<const ScanDirectory*, std::string>> credentials;
    std::vector<std::pair<const ScanDirectory*, std::string>> credentialFiles;
    std::int64_t deniedDirectories = 0;
    std::int64_t unreadableFiles = 0;
    std::int64_t skippedMountPoints = 0;
    std::int64_t hardLinkSavedBytes = 0;
    std::int64_t cloneSharedBytes = 0;
    std::uint64_t knownDevice = 0;
    bool deviceKnown = false;
    bool deviceSharesBlocks = false;
    unsigned foldersSinceNamed = 0;
};

bool isTrashName(std::string_view name) {
    return name == ".Trash" || name == ".Trashes" || name == "Trash" || name.starts_with(".Trash-");
}

class Walk {
public:
    Walk(ScanTree& tree, const SpaceScanOptions& options, ScanProgress& progress,
         const std::function<bool()>& isCancelled, std::uint64_t rootDevice, std::uint64_t rootMount)
        : tree_(tree),
          options_(options),
          progress_(progress),
          isCancelled_(isCancelled),
          rootDevice_(rootDevice),
          rootMount_(rootMount) {
        for (const auto& pattern : options.excludes)
            (pattern.find('/') == std::string::npos ? namePatterns_ : pathPatterns_).push_back(pattern);
        for (const auto& path : options.countedElsewhere) {
            const std::string prefix = tree.rootPath == "/" ? "/" : tree.rootPath + "/";
            if (!path.starts_with(prefix) || path == tree.rootPath) continue;
            if (const auto status = Access::statusOfPath(path))
                skippedIdentities_.push_back({status->device, status->inode});
        }
    }

    void run(int rootHandle, unsigned threadCount) {
        jobs_.push_back({tree_.root, nullptr, rootHandle});
        std::vector<Worker> workers(threadCount);
        for (auto& worker : workers) {
            tree_.arenas.push_back(std::make_unique<ScanArena>());
            worker.arena = tree_.arenas.back().get();
        }
        std::vector<std::thread> threads;
        for (unsigned i = 1; i < threadCount; ++i) threads.emplace_back([this, &workers, i] { work(workers[i]); });
        work(workers[0]);
        for (auto& thread : threads) thread.join();
        finish(workers);
    }

private:
    void work(Worker& worker) {
        Job job;
        while (pop(job)) {
            process(job, worker);
            push(worker.newJobs);
            worker.newJobs.clear();
        }
    }

    bool pop(Job& job) {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return !jobs_.empty() || active_ == 0; });
        if (jobs_.empty()) return false;
        job = jobs_.back();
        jobs_.pop_back();
        ++active_;
        return true;
    }

    void push(const std::vector<Job>& more) {
        bool done = false;
        {
            std::lock_guard lock(mutex_);
            jobs_.insert(jobs_.end(), more.begin(), more.end());
            --active_;
            done = active_ == 0 && jobs_.empty();
        }
        if (done || more.size() > 1) {
            wake_.notify_all();
        } else if (more.size() == 1) {
            wake_.notify_one();
        }
    }

    static void release(OpenParent* parent) {
        if (parent && parent->waiting.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            Access::close(parent->handle);
            delete parent;
        }
    }

    bool cancelled() {
        if (cancelled_.load(std::memory_order_relaxed)) return true;
        if (isCancelled_ && isCancelled_()) {
            cancelled_.store(true, std::memory_order_relaxed);
            return true;
        }
        return false;
    }

    bool excluded(const ScanDirectory* folder, std::string_view name) const {
        std::string nameText;  // fnmatch wants NUL-terminated text
        for (const auto& pattern : namePatterns_) {
            if (nameText.empty()) nameText.assign(name);
            if (::fnmatch(pattern.c_str(), nameText.c_str(), 0) == 0) return true;
        }
        if (pathPatterns_.empty()) return false;
        const std::string path = tree_.path(folder, name);
        for (const auto& pattern : pathPatterns_)
            if (::fnmatch(pattern.c_str(), path.c_str(), 0) == 0) return true;
        return false;
    }

    bool sharesBlocks(Worker& worker, std::uint64_t device, int handle) {
        if (!worker.deviceKnown || worker.knownDevice != device) {
            worker.knownDevice = device;
            worker.deviceKnown = true;
            worker.deviceSharesBlocks = BlockSharing::canShareBlocks(Access::fileSystemMagic(handle));
        }
        return worker.deviceSharesBlocks;
    }

    void markDenied(ScanDirectory* folder, Worker& worker, const OpenParent* parent) {
        folder->flags |= ScanDirectory::denied;
        ++worker.deniedDirectories;
        // The folder's own entry still occupies its blocks.
        Access::Status status;
        int error = 0;
        if (parent && Access::statusAt(parent->handle, folder->name, status, error)) {
            folder->ownAllocatedBytes = folder->directAllocatedBytes = folder->directExclusiveBytes =
                status.allocatedBytes;
            folder->modifiedNanoseconds = status.modifiedNanoseconds;
        }
        progress_.addFolder(0, folder->directAllocatedBytes, true);
    }

    void process(const Job& job, Worker& worker) {
        ScanDirectory* folder = job.folder;
        if (cancelled()) {
            folder->flags |= ScanDirectory::notRead;
            Access::close(job.handle);
            release(job.parent);
            return;
        }
        int error = 0;
        int handle = job.handle;
        if (handle < 0) handle = Access::openDirectoryAt(job.parent->handle, folder->name, error);
        if (handle < 0) {
            if (Access::isVanished(error)) {
                folder->flags |= ScanDirectory::vanished;
            } else {
                markDenied(folder, worker, job.parent);
            }
            release(job.parent);
            return;
        }
        release(job.parent);

        Access::Status own;
        if (!Access::status(handle, own, error)) {
            markDenied(folder, worker, nullptr);
            Access::close(handle);
            return;
        }
        // A bind mount of a folder of the same device is a mount point too: the mount ID tells.
        if (folder->parent && options_.oneFileSystem && (own.device != rootDevice_ || own.mountID != rootMount_)) {
            folder->flags |= ScanDirectory::otherDevice;
            ++worker.skippedMountPoints;
            Access::close(handle);
            return;
        }
        for (const auto& identity : skippedIdentities_) {
            if (identity.device == own.device && identity.inode == own.inode) {
                folder->flags |= ScanDirectory::skipped;
                Access::close(handle);
                return;
            }
        }
        folder->ownAllocatedBytes = own.allocatedBytes;
        folder->directAllocatedBytes = own.allocatedBytes;
        folder->directExclusiveBytes = own.allocatedBytes;
        folder->modifiedNanoseconds = own.modifiedNanoseconds;
        if (!folder->has(ScanDirectory::inTrash) && (!folder->parent || isTrashName(folder->nameView()))) {
            const std::string path = tree_.path(folder) + "/";
            if (CredentialNames::isInTrash(path) || CredentialNames::isInFreedesktopTrash(path))
                folder->flags |= ScanDirectory::inTrash;
        }
        const bool shares = sharesBlocks(worker, own.device, handle);
        std::uint32_t subfolders = 0;
        worker.files.clear();
        worker.fileNames.clear();

        for (;;) {
            if (!Access::readBatch(handle, worker.buffer, worker.entries, error)) {
                folder->flags |= ScanDirectory::readFailed;
                ++worker.deniedDirectories;
                break;
            }
            if (worker.entries.empty()) break;
            for (const auto& entry : worker.entries) {
                const std::string_view name(entry.name, entry.length);
                if ((!namePatterns_.empty() || !pathPatterns_.empty()) && excluded(folder, name)) continue;
                if (entry.type == EntryType::directory) {
                    addSubfolder(folder, name, worker);
                    ++subfolders;
                    continue;
                }
                Access::Status status = entry.status.value_or(Access::Status{});
                if (!entry.status && !Access::statusAt(handle, entry.name, status, error)) {
                    if (!Access::isVanished(error)) ++worker.unreadableFiles;
                    continue;
                }
                if (status.type == EntryType::directory) {
                    addSubfolder(folder, name, worker);
                    ++subfolders;
                    continue;
                }
                countItem(folder, handle, entry, status, shares, worker);
            }
        }

        keepLargestFiles(folder, worker);
        progress_.addFolder(folder->directFileCount, folder->directAllocatedBytes, false);
        if (++worker.foldersSinceNamed >= 256) {
            worker.foldersSinceNamed = 0;
            progress_.setCurrentFolder(tree_.path(folder));
        }

        if (subfolders == 0) {
            Access::close(handle);
            return;
        }
        auto* shared = new OpenParent;
        shared->handle = handle;
        shared->waiting.store(subfolders, std::memory_order_relaxed);
        for (ScanDirectory* child = folder->firstChild; child; child = child->nextSibling)
            worker.newJobs.push_back({child, shared, -1});
    }

    void addSubfolder(ScanDirectory* folder, std::string_view name, Worker& worker) {
        ScanDirectory* child = worker.arena->newDirectory();
        child->parent = folder;
        child->name = worker.arena->copyName(name);
        child->nameLength = static_cast<std::uint16_t>(name.size());
        child->depth = static_cast<std::uint16_t>(folder->depth + 1);
        child->flags = folder->flags & ScanDirectory::inTrash;
        child->nextSibling = folder->firstChild;
        folder->firstChild = child;
        ++folder->directEntries;
    }

    void countItem(ScanDirectory* folder, int handle, const Access::Entry& entry, const Access::Status& status,
                   bool shares, Worker& worker) {
        const std::string_view name(entry.name, entry.length);
        const bool linked = status.linkCount > 1;
        if (linked && !hardLinks_.firstSighting(status, folder)) {
            worker.hardLinkSavedBytes = checkedAdd(worker.hardLinkSavedBytes, status.allocatedBytes);
            return;
        }
        ++folder->directEntries;
        const bool regular = status.type == EntryType::regular;
        // A hard-linked file is exclusive only to the folder holding all its names (settled later).
        std::int64_t exclusive = linked ? 0 : status.allocatedBytes;
        std::int64_t firstPhysical = -1;
        if (shares && regular && status.allocatedBytes > 0) {
            if (const auto facts = Access::cloneFactsAt(handle, entry.name, status.logicalBytes)) {
                const std::int64_t own = std::clamp<std::int64_t>(facts->exclusiveBytes, 0, status.allocatedBytes);
                worker.cloneSharedBytes = checkedAdd(worker.cloneSharedBytes, status.allocatedBytes - own);
                if (!linked) exclusive = own;
                firstPhysical = facts->firstPhysicalOffset;
            }
        }
        folder->directLogicalBytes = checkedAdd(folder->directLogicalBytes, status.logicalBytes);
        folder->directAllocatedBytes = checkedAdd(folder->directAllocatedBytes, status.allocatedBytes);
        folder->directExclusiveBytes = checkedAdd(folder->directExclusiveBytes, exclusive);
        folder->modifiedNanoseconds = std::max(folder->modifiedNanoseconds, status.modifiedNanoseconds);
        const bool inTrash = folder->has(ScanDirectory::inTrash);
        if ((inTrash || options_.listCredentials) && CredentialNames::looksLikeCredential(name)) {
            if (inTrash) worker.credentials.emplace_back(folder, std::string(name));
            if (options_.listCredentials) worker.credentialFiles.emplace_back(folder, std::string(name));
        }
        if (!regular) return;

        ++folder->directFileCount;
        PendingFile file;
        file.nameOffset = static_cast<std::uint32_t>(worker.fileNames.size());
        file.nameLength = entry.length;
        file.logicalBytes = status.logicalBytes;
        file.allocatedBytes = status.allocatedBytes;
        file.exclusiveBytes = exclusive;
        file.modifiedNanoseconds = status.modifiedNanoseconds;
        worker.fileNames.append(name);
        worker.files.push_back(file);

        if (options_.largestFileCount > 0 && (worker.largest.size() < options_.largestFileCount ||
                                              status.allocatedBytes > worker.largest.front().allocatedBytes)) {
            if (worker.largest.size() >= options_.largestFileCount) {
                std::pop_heap(worker.largest.begin(), worker.largest.end(), smallerFile);
                worker.largest.pop_back();
            }
            worker.largest.push_back({folder, std::string(name), status.logicalBytes, status.allocatedBytes, exclusive,
                                      status.modifiedNanoseconds});
            std::push_heap(worker.largest.begin(), worker.largest.end(), smallerFile);
        }
        if (options_.findDuplicates && status.logicalBytes > 0 &&
            status.logicalBytes >= options_.duplicateMinimumBytes) {
            worker.duplicates.push_back({folder, worker.arena->copyName(name), status.logicalBytes,
                                         status.allocatedBytes, status.device, status.inode, firstPhysical});
        }
    }

    void keepLargestFiles(ScanDirectory* folder, Worker& worker) const {
        auto& files = worker.files;
        if (files.empty() || options_.keptFilesPerFolder == 0) return;
        constexpr std::size_t mostKept = UINT16_MAX;  // what ScanDirectory::keptFileCount holds
        const std::size_t keep = std::min({files.size(), options_.keptFilesPerFolder, mostKept});
        if (keep < files.size()) {
            std::nth_element(
                files.begin(), files.begin() + static_cast<std::ptrdiff_t>(keep - 1), files.end(),
                [](const PendingFile& a, const PendingFile& b) { return a.allocatedBytes > b.allocatedBytes; });
        }
        ScanFile* kept = worker.arena->newFiles(keep);
        for (std::size_t i = 0; i < keep; ++i) {
            const PendingFile& file = files[i];
            kept[i].name =
                worker.arena->copyName(std::string_view(worker.fileNames).substr(file.nameOffset, file.nameLength));
            kept[i].nameLength = file.nameLength;
            kept[i].logicalBytes = file.logicalBytes;
            kept[i].allocatedBytes = file.allocatedBytes;
            kept[i].exclusiveBytes = file.exclusiveBytes;
            kept[i].modifiedNanoseconds = file.modifiedNanoseconds;
        }
        folder->keptFiles = kept;
        folder->keptFileCount = static_cast<std::uint16_t>(keep);
    }

    static ScanDirectory* commonAncestor(ScanDirectory* a, ScanDirectory* b) {
        while (a->depth > b->depth) a = a->parent;
        while (b->depth > a->depth) b = b->parent;
        while (a != b) {
            a = a->parent;
            b = b->parent;
        }
        return a;
    }

    // A hard-linked file is exclusive to the innermost folder holding every one of its names;
    // when some name lies outside the scan, removing anything here frees nothing.
    void settleHardLinks() {
        hardLinks_.forEach([](const LinkedInode& inode) {
            if (inode.folders.size() < inode.linkCount) return;
            ScanDirectory* holder = inode.folders.front();
            for (ScanDirectory* folder : inode.folders) holder = commonAncestor(holder, folder);
            holder->directExclusiveBytes = checkedAdd(holder->directExclusiveBytes, inode.allocatedBytes);
        });
    }

    // Sums every folder's subtree, children before parents, without recursion.
    void sumSubtrees() {
        std::vector<std::pair<ScanDirectory*, bool>> stack{{tree_.root, false}};
        while (!stack.empty()) {
            auto [folder, childrenDone] = stack.back();
            stack.pop_back();
            if (!childrenDone) {
                stack.push_back({folder, true});
                for (ScanDirectory* child = folder->firstChild; child; child = child->nextSibling)
                    if (child->isCounted()) stack.push_back({child, false});
                continue;
            }
            folder->logicalBytes = folder->directLogicalBytes;
            folder->allocatedBytes = folder->directAllocatedBytes;
            folder->exclusiveBytes = folder->directExclusiveBytes;
            folder->fileCount = folder->directFileCount;
            folder->directoryCount = 0;
            for (ScanDirectory* child = folder->firstChild; child; child = child->nextSibling) {
                if (!child->isCounted()) continue;
                folder->logicalBytes = checkedAdd(folder->logicalBytes, child->logicalBytes);
                folder->allocatedBytes = checkedAdd(folder->allocatedBytes, child->allocatedBytes);
                folder->exclusiveBytes = checkedAdd(folder->exclusiveBytes, child->exclusiveBytes);
                folder->fileCount = checkedAdd(folder->fileCount, child->fileCount);
                folder->directoryCount = checkedAdd(folder->directoryCount, child->directoryCount + 1);
                folder->modifiedNanoseconds = std::max(folder->modifiedNanoseconds, child->modifiedNanoseconds);
            }
        }
    }

    void finish(std::vector<Worker>& workers) {
        settleHardLinks();
        sumSubtrees();
        std::vector<DuplicateFinder::Candidate> candidates;
        for (auto& worker : workers) {
            tree_.deniedDirectories += worker.deniedDirectories;
            tree_.unreadableFiles += worker.unreadableFiles;
            tree_.skippedMountPoints += worker.skippedMountPoints;
            tree_.hardLinkSavedBytes = checkedAdd(tree_.hardLinkSavedBytes, worker.hardLinkSavedBytes);
            tree_.cloneSharedBytes = checkedAdd(tree_.cloneSharedBytes, worker.cloneSharedBytes);
            for (auto& file : worker.largest) tree_.largestFiles.push_back(std::move(file));
            for (const auto& [folder, name] : worker.credentials)
                tree_.credentialsInTrash.push_back(tree_.path(folder, name));
            for (const auto& [folder, name] : worker.credentialFiles)
                tree_.credentialFiles.push_back(tree_.path(folder, name));
            for (const auto& pending : worker.duplicates) {
                candidates.push_back({tree_.path(pending.folder, pending.name), pending.logicalBytes,
                                      pending.allocatedBytes, pending.device, pending.inode,
                                      pending.firstPhysicalOffset});
            }
        }
        std::sort(tree_.largestFiles.begin(), tree_.largestFiles.end(), smallerFile);
        if (tree_.largestFiles.size() > options_.largestFileCount) tree_.largestFiles.resize(options_.largestFileCount);
        std::sort(tree_.credentialsInTrash.begin(), tree_.credentialsInTrash.end());
        std::sort(tree_.credentialFiles.begin(), tree_.credentialFiles.end());
        if (!candidates.empty() && !cancelled()) {
            // Hashing is bound by the processor, not by waiting on the disk: one thread per core.
            const unsigned hashers =
                std::clamp(std::thread::hardware_concurrency(), 1u, static_cast<unsigned>(workers.size()));
            auto search =
                DuplicateFinder::find(std::move(candidates), hashers, progress_, [this] { return cancelled(); });
            tree_.duplicates = std::move(search.groups);
            tree_.sparseFilesLeftOut = search.sparseLeftOut;
        }
        tree_.wasCancelled = cancelled_.load();
    }

    ScanTree& tree_;
    const SpaceScanOptions& options_;
    ScanProgress& progress_;
    const std::function<bool()>& isCancelled_;
    const std::uint64_t rootDevice_;
    const std::uint64_t rootMount_;
    std::vector<std::string> namePatterns_;
    std::vector<std::string> pathPatterns_;
    std::vector<InodeKey> skippedIdentities_;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::vector<Job> jobs_;
    unsigned active_ = 0;
    std::atomic<bool> cancelled_{false};
    HardLinkTable hardLinks_;
};

}  // namespace

unsigned defaultThreads() {
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    return std::clamp(cores * 8, 16u, 32u);
}

std::string normalisedRoot(const std::string& root) {
    return normalPath(root);
}

ScanTree scan(const std::string& root, const SpaceScanOptions& options, ScanProgress& progress,
              const std::function<bool()>& isCancelled) {
    ScanTree tree;
    tree.rootPath = normalisedRoot(root);
    int error = 0;
    const int handle = Access::openDirectory(tree.rootPath, error);
    if (handle < 0) throw SpaceScanError("cannot scan " + tree.rootPath + ": " + Access::errorText(error));
    Access::Status status;
    if (!Access::status(handle, status, error)) {
        Access::close(handle);
        throw SpaceScanError("cannot scan " + tree.rootPath + ": " + Access::errorText(error));
    }
    Access::raiseOpenFileLimit();

    tree.arenas.push_back(std::make_unique<ScanArena>());
    tree.root = tree.arenas.back()->newDirectory();
    tree.root->name = tree.arenas.back()->copyName(tree.rootPath);
    tree.root->nameLength = static_cast<std::uint16_t>(tree.rootPath.size());

    Walk walk(tree, options, progress, isCancelled, status.device, status.mountID);
    walk.run(handle, options.threads == 0 ? defaultThreads() : options.threads);
    progress.markFinished();
    return tree;
}

}  // namespace corvel::SpaceScanner
