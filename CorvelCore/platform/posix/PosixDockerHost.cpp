// The half of LocalDockerHost that Linux and macOS share: plain POSIX file facts. What differs
// per OS (the platform name, walking the native engine's data folder) stays in
// platform/linux/LinuxDockerHost.cpp and platform/macos/MacDockerHost.cpp.
#include "docker/LocalDockerHost.h"

#include "common/CheckedArithmetic.h"

#include <fstream>
#include <iterator>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvel {
namespace {

constexpr std::int64_t blockUnit = 512;                // st_blocks is counted in 512-byte units
constexpr std::int64_t maximumSettingsSize = 4 << 20;  // a settings document, not a data file

}  // namespace

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

}  // namespace corvel
