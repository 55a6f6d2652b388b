#include "migration/TreeVerifier.h"

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"
#include "migration/FileDigest.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <map>
#include <system_error>
#include <thread>
#include <vector>

namespace corvel::TreeVerifier {
namespace {

namespace fs = std::filesystem;

enum class EntryType { file, folder, link, special };

struct Entry {
    EntryType type = EntryType::file;
    std::int64_t size = 0;
    unsigned mode = 0;
    std::string linkTarget;
};

const char* typeName(EntryType type) {
    static constexpr const char* names[] = {"file", "folder", "symbolic link", "special file"};
    return names[static_cast<int>(type)];
}

struct Listing {
    std::map<std::string, Entry> entries;  // by path relative to the root
    std::vector<TreeDifference> unreadable;
};

EntryType typeOf(mode_t mode) {
    if (S_ISREG(mode)) return EntryType::file;
    if (S_ISDIR(mode)) return EntryType::folder;
    if (S_ISLNK(mode)) return EntryType::link;
    return EntryType::special;
}

void listFolder(const std::string& root, const std::string& relative, Listing& listing, MigrationProgress& progress,
                const std::function<bool()>& isCancelled) {
    if (isCancelled()) return;
    const auto folder = relative.empty() ? root : joinPath(root, relative);
    std::error_code error;
    fs::directory_iterator it(folder, error);
    std::vector<std::string> subfolders;
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
        const auto name = it->path().filename().string();
        const auto path = relative.empty() ? name : relative + "/" + name;
        struct stat status {};
        if (::lstat(joinPath(root, path).c_str(), &status) != 0) {
            listing.unreadable.push_back(
                {path, DifferenceKind::unreadable, std::generic_category().message(errno) + " in " + root});
            continue;
        }
        Entry entry{typeOf(status.st_mode), status.st_size, static_cast<unsigned>(status.st_mode & 07777), {}};
        if (entry.type == EntryType::link) {
            entry.linkTarget = fs::read_symlink(joinPath(root, path), error).string();
            if (error) {
                listing.unreadable.push_back({path, DifferenceKind::unreadable, error.message() + " in " + root});
                error.clear();
                continue;
            }
        }
        if (entry.type == EntryType::folder) subfolders.push_back(path);
        if (entry.type == EntryType::file) progress.addTotalBytes(entry.size);
        listing.entries.emplace(path, std::move(entry));
    }
    if (error) listing.unreadable.push_back({relative, DifferenceKind::unreadable, error.message() + " in " + root});
    for (const auto& subfolder : subfolders) listFolder(root, subfolder, listing, progress, isCancelled);
}

Listing list(const std::string& root, MigrationProgress& progress, const std::function<bool()>& isCancelled) {
    Listing listing;
    // The root may be a link to the tree (a workspace left behind as a link after a move).
    listFolder(fs::path(root).string(), "", listing, progress, isCancelled);
    return listing;
}

struct HashJob {
    std::string path;
    std::int64_t size = 0;
    FileDigest source;
    FileDigest copy;
};

void hashAll(std::vector<HashJob>& jobs, const std::string& source, const std::string& copy, unsigned workers,
             MigrationProgress& progress, const std::function<bool()>& isCancelled) {
    // Largest first, so that one big file does not start last and leave the other workers idle.
    std::sort(jobs.begin(), jobs.end(), [](const auto& a, const auto& b) { return a.size > b.size; });
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        std::vector<unsigned char> buffer(FileDigest::bufferBytes);
        for (auto index = next.fetch_add(1); index < jobs.size(); index = next.fetch_add(1)) {
            auto& job = jobs[index];
            job.source = FileDigest::of(joinPath(source, job.path), buffer, progress, isCancelled);
            job.copy = FileDigest::of(joinPath(copy, job.path), buffer, progress, isCancelled);
            progress.addFile();
        }
    };
    const auto count = std::max(1u, std::min<unsigned>(workers, static_cast<unsigned>(jobs.size())));
    std::vector<std::thread> threads;
    for (unsigned i = 1; i < count; ++i) threads.emplace_back(work);
    work();
    for (auto& thread : threads) thread.join();
}

std::string shortDigest(const std::string& digest) {
    return digest.substr(0, 12);
}

std::optional<TreeDifference> judge(const HashJob& job) {
    for (const auto* side : {&job.source, &job.copy}) {
        if (side->wasCancelled) return std::nullopt;
        if (side->error != 0)
            return TreeDifference{job.path, DifferenceKind::unreadable,
                                  std::generic_category().message(side->error) +
                                      (side == &job.source ? " in the source" : " in the copy")};
    }
    if (job.source.bytesRead != job.size || job.copy.bytesRead != job.size)
        return TreeDifference{job.path, DifferenceKind::contentDiffers, "changed while being read"};
    if (job.source.sha256 != job.copy.sha256)
        return TreeDifference{
            job.path, DifferenceKind::contentDiffers,
            "SHA-256 " + shortDigest(job.source.sha256) + "… against " + shortDigest(job.copy.sha256) + "…"};
    return std::nullopt;
}

}  // namespace

TreeComparison compare(const std::string& source, const std::string& copy, const Options& options,
                       MigrationProgress& progress, const std::function<bool()>& isCancelled) {
    TreeComparison result;
    result.source = source;
    result.copy = copy;
    progress.setPhase("Listing");
    auto original = list(source, progress, isCancelled);
    auto copied = list(copy, progress, isCancelled);
    auto& differences = result.differences;
    differences = std::move(original.unreadable);
    differences.insert(differences.end(), copied.unreadable.begin(), copied.unreadable.end());

    std::vector<HashJob> jobs;
    for (const auto& [path, entry] : original.entries) {
        const auto found = copied.entries.find(path);
        if (found == copied.entries.end()) {
            differences.push_back(
                {path, DifferenceKind::missing, std::string(typeName(entry.type)) + " not in the copy"});
            continue;
        }
        const auto& other = found->second;
        ++result.entriesCompared;
        if (entry.type != other.type) {
            differences.push_back({path, DifferenceKind::typeDiffers,
                                   fmt::format("{} against {}", typeName(entry.type), typeName(other.type))});
            continue;
        }
        if (entry.type == EntryType::special) {
            result.skipped.push_back(path);
            continue;
        }
        if (entry.type == EntryType::link) {
            if (entry.linkTarget != other.linkTarget)
                differences.push_back({path, DifferenceKind::linkTargetDiffers,
                                       "'" + entry.linkTarget + "' against '" + other.linkTarget + "'"});
            continue;  // a link's own mode means nothing on most systems
        }
        if (entry.mode != other.mode)
            differences.push_back(
                {path, DifferenceKind::modeDiffers, fmt::format("{:04o} against {:04o}", entry.mode, other.mode)});
        if (entry.type != EntryType::file) continue;
        if (entry.size != other.size) {
            differences.push_back(
                {path, DifferenceKind::sizeDiffers, fmt::format("{} bytes against {}", entry.size, other.size)});
            continue;
        }
        jobs.push_back({path, entry.size, {}, {}});
    }
    for (const auto& [path, entry] : copied.entries)
        if (!original.entries.count(path))
            differences.push_back(
                {path, DifferenceKind::extra, std::string(typeName(entry.type)) + " only in the copy"});

    progress.setPhase("Comparing contents");
    const auto workers = options.workers ? options.workers : std::max(1u, std::thread::hardware_concurrency());
    hashAll(jobs, source, copy, workers, progress, isCancelled);
    for (const auto& job : jobs) {
        if (job.source.wasCancelled || job.copy.wasCancelled) continue;
        ++result.filesHashed;
        result.bytesHashed = checkedAdd(result.bytesHashed, checkedAdd(job.source.bytesRead, job.copy.bytesRead));
        if (auto difference = judge(job)) differences.push_back(std::move(*difference));
    }
    std::sort(differences.begin(), differences.end(),
              [](const auto& a, const auto& b) { return a.path != b.path ? a.path < b.path : a.kind < b.kind; });
    result.wasCancelled = isCancelled();
    result.isIdentical = !result.wasCancelled && differences.empty();
    return result;
}

}  // namespace corvel::TreeVerifier
