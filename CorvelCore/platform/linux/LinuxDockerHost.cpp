// Linux side of LocalDockerHost: plain POSIX file facts, plus a walk of the native engine's
// data folder (staying on its device, each hard-linked inode counted once).
#include "docker/LocalDockerHost.h"

#include "common/CheckedArithmetic.h"

#include <fstream>
#include <iterator>
#include <set>
#include <utility>
#include <vector>

#include <fts.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvel {
namespace {

constexpr std::int64_t blockUnit = 512;                // st_blocks is counted in 512-byte units
constexpr std::int64_t maximumSettingsSize = 4 << 20;  // a settings document, not a data file

}  // namespace

std::string LocalDockerHost::platform() const {
    return "linux";
}

std::optional<std::string> LocalDockerHost::userHome() const {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* result = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &result) != 0 || !result || !result->pw_dir)
        return std::nullopt;
    return std::string(result->pw_dir);
}

bool LocalDockerHost::isExecutableFile(const std::string& path) const {
    struct stat facts {};
    return stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) && access(path.c_str(), X_OK) == 0;
}

std::optional<std::string> LocalDockerHost::readTextFile(const std::string& path) const {
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size > maximumSettingsSize)
        return std::nullopt;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

std::optional<DockerFileFacts> LocalDockerHost::regularFileFacts(const std::string& path) const {
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return std::nullopt;
    return DockerFileFacts{facts.st_size, checkedMultiply(facts.st_blocks, blockUnit)};
}

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
