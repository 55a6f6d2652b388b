// Linux side of LocalDockerHost (the shared POSIX file facts are in
// platform/posix/PosixDockerHost.cpp): a walk of the native engine's data folder, staying on its
// device, each hard-linked inode counted once.
#include "docker/LocalDockerHost.h"

#include "common/CheckedArithmetic.h"

#include <set>
#include <utility>

#include <fts.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvel {
namespace {

constexpr std::int64_t blockUnit = 512;  // st_blocks is counted in 512-byte units

}  // namespace

std::optional<DockerFileFacts> LocalDockerHost::folderFacts(const std::string& path) const {
    struct stat rootFacts {};
    if (stat(path.c_str(), &rootFacts) != 0 || !S_ISDIR(rootFacts.st_mode) || access(path.c_str(), R_OK | X_OK) != 0)
        return std::nullopt;

    std::string root = path;
    char* const roots[] = {root.data(), nullptr};
    FTS* walk = fts_open(roots, FTS_PHYSICAL | FTS_XDEV | FTS_NOCHDIR, nullptr);
    if (!walk) return std::nullopt;

    DockerFileFacts total;
    std::set<std::pair<dev_t, ino_t>> linkedSeen;
    while (FTSENT* entry = fts_read(walk)) {
        // Folders are counted on the way in only; unreadable ones still count their own blocks.
        if (entry->fts_info == FTS_DP || entry->fts_info == FTS_NS || entry->fts_info == FTS_ERR) continue;
        const struct stat* facts = entry->fts_statp;
        if (!facts) continue;
        if (!S_ISDIR(facts->st_mode) && facts->st_nlink > 1 && !linkedSeen.emplace(facts->st_dev, facts->st_ino).second)
            continue;
        if (S_ISREG(facts->st_mode) || S_ISLNK(facts->st_mode))
            total.apparentBytes = checkedAdd(total.apparentBytes, facts->st_size);
        total.allocatedBytes = checkedAdd(total.allocatedBytes, checkedMultiply(facts->st_blocks, blockUnit));
    }
    fts_close(walk);
    return total;
}

}  // namespace corvel
