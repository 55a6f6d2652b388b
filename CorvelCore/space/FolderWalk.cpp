#include "space/FolderWalk.h"

#include <memory>
#include <utility>
#include <vector>

#include "common/PathText.h"
#include "space/ScanDirectoryAccess.h"

namespace corvel::FolderWalk {
namespace {

using EntryType = DirectoryReader::EntryType;

// A folder handle shared by the subfolders still waiting to be opened from it: closed when the
// last of them has been, so a deep chain holds two handles, not one per level.
class OpenFolder {
public:
    OpenFolder(FileMetadataReading& files, int handle) : files_(files), handle_(handle) {}
    ~OpenFolder() { files_.close(handle_); }
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;
    int handle() const { return handle_; }

private:
    FileMetadataReading& files_;
    int handle_;
};

struct Pending {
    std::shared_ptr<OpenFolder> parent;
    std::string name;
    std::string path;  // for areas, progress and failures only; never handed to the system
    std::size_t tag = 0;
};

class Walk {
public:
    Walk(Visitor& visitor, FileMetadataReading& files, ScanProgress& progress, const std::function<bool()>& isCancelled)
        : visitor_(visitor), files_(files), progress_(progress), isCancelled_(isCancelled) {}

    Outcome run(const std::string& root) {
        if (cancelled()) {
            outcome_.wasCancelled = true;
            return finish();
        }
        int error = 0;
        const int handle = files_.openFolder(root, error);
        std::optional<PathStatus> status;
        if (handle >= 0) status = files_.status(handle, error);
        if (!status) {
            if (handle >= 0) files_.close(handle);
            folderFailed(error, root);
            outcome_.rootError = std::string(ScanDirectoryAccess::errorText(error));
            return finish();
        }
        root_ = *status;
        visit(std::make_shared<OpenFolder>(files_, handle), root, visitor_.enterFolder(root, 0));
        while (!pending_.empty() && !outcome_.wasCancelled) {
            if (cancelled()) {
                outcome_.wasCancelled = true;
                break;
            }
            Pending next = std::move(pending_.back());
            pending_.pop_back();
            enter(std::move(next));
        }
        return finish();
    }

private:
    Outcome finish() { return std::move(outcome_); }

    bool cancelled() const { return isCancelled_ && isCancelled_(); }

    void folderFailed(int error, const std::string& path) {
        outcome_.deniedDirectories += 1;
        outcome_.failures.folderFailed(error, path);
        progress_.addFolder(0, 0, true);
    }

    void enter(Pending next) {
        int error = 0;
        const int handle = files_.openFolderAt(next.parent->handle(), next.name, error);
        next.parent.reset();
        if (handle < 0) {
            // Deleted or replaced since it was listed: nothing to count, nothing failed.
            if (!ScanDirectoryAccess::isVanished(error)) folderFailed(error, next.path);
            return;
        }
        auto folder = std::make_shared<OpenFolder>(files_, handle);
        const std::optional<PathStatus> status = files_.status(handle, error);
        if (!status) {
            folderFailed(error, next.path);
            return;
        }
        // Other volumes and mount points below the root, bind mounts included, are never entered.
        if (status->device != root_.device || status->mountID != root_.mountID) return;
        visit(std::move(folder), next.path, visitor_.enterFolder(next.path, next.tag));
    }

    void visit(std::shared_ptr<OpenFolder> folder, const std::string& path, std::size_t tag) {
        entries_.clear();
        int listError = 0;
        const bool complete = files_.list(folder->handle(), entries_, listError);
        int error = 0;
        std::int64_t files = 0;
        std::int64_t allocated = 0;
        for (const DirectoryReader::Entry& entry : entries_) {
            EntryType type = entry.type;
            std::optional<PathStatus> status;
            if (type == EntryType::other) {
                // Some file systems leave the entry type unknown; only then is a status needed to
                // tell files and folders apart.
                status = files_.statusAt(folder->handle(), entry.name, error);
                if (!status) {
                    if (!ScanDirectoryAccess::isVanished(error)) outcome_.failures.fileFailed(error);
                    continue;
                }
                type = status->type;
            }
            if (type == EntryType::directory) {
                pending_.push_back({folder, entry.name, joinPath(path, entry.name), tag});
            } else if (type == EntryType::regular) {
                const FileOutcome file = visitor_.file(folder->handle(), entry.name, status, tag);
                if (file.error != 0 && !ScanDirectoryAccess::isVanished(file.error))
                    outcome_.failures.fileFailed(file.error);
                if (file.counted) {
                    files += 1;
                    allocated += file.allocatedBytes;
                }
                if (++filesSincePoll_ >= cancellationPollInterval) {
                    filesSincePoll_ = 0;
                    if (cancelled()) {
                        outcome_.wasCancelled = true;
                        break;
                    }
                }
            }
            // Symbolic links and special files are never followed or counted.
        }
        if (!complete) {
            outcome_.deniedDirectories += 1;
            outcome_.failures.folderFailed(listError, path);
        }
        progress_.addFolder(files, allocated, !complete);
        if (++foldersSinceNamed_ >= 64) {
            foldersSinceNamed_ = 0;
            progress_.setCurrentFolder(path);
        }
    }

    Visitor& visitor_;
    FileMetadataReading& files_;
    ScanProgress& progress_;
    const std::function<bool()>& isCancelled_;
    Outcome outcome_;
    PathStatus root_;
    std::vector<Pending> pending_;
    std::vector<DirectoryReader::Entry> entries_;
    std::int64_t filesSincePoll_ = 0;
    unsigned foldersSinceNamed_ = 63;  // name the first folder at once
};

}  // namespace

Outcome run(const std::string& root, Visitor& visitor, FileMetadataReading& files, ScanProgress& progress,
            const std::function<bool()>& isCancelled) {
    return Walk(visitor, files, progress, isCancelled).run(normalPath(root));
}

}  // namespace corvel::FolderWalk
