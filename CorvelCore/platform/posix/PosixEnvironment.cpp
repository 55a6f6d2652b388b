#include "common/Environment.h"

#include <cstring>
#include <vector>

#include <pwd.h>
#include <unistd.h>

extern char** environ;

namespace corvel {

Environment currentEnvironment() {
    Environment environment;
    for (char** entry = environ; entry && *entry; ++entry) {
        const char* equals = std::strchr(*entry, '=');
        if (!equals) continue;
        environment.emplace(std::string(*entry, static_cast<std::size_t>(equals - *entry)), std::string(equals + 1));
    }
    return environment;
}

std::optional<std::string> lookup(const Environment& environment, const std::string& name) {
    const auto found = environment.find(name);
    if (found == environment.end() || found->second.empty()) return std::nullopt;
    return found->second;
}

std::optional<std::string> passwordDatabaseHome() {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* result = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &result) != 0 || !result || !result->pw_dir ||
        !*result->pw_dir)
        return std::nullopt;
    return std::string(result->pw_dir);
}

std::string userHome(const Environment& environment) {
    if (auto home = lookup(environment, "HOME")) return *home;
    return passwordDatabaseHome().value_or("/");
}

}  // namespace corvel
