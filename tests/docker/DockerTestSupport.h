// Test doubles for the Docker inventory: a runner that answers from a script and records every
// call, and a host whose files exist only in memory.
#pragma once

#include "command/CommandError.h"
#include "command/CommandRunning.h"
#include "docker/DockerHostProbing.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace corvel::testing {

class ScriptedRunner : public CommandRunning {
public:
    using Reply = std::variant<std::string, CommandError>;

    void answer(std::vector<std::string> arguments, Reply reply) {
        replies_.insert_or_assign(std::move(arguments), std::move(reply));
    }

    std::string run(const std::string& executable, const std::vector<std::string>& arguments) override {
        calls.push_back(arguments);
        executables.push_back(executable);
        const auto found = replies_.find(arguments);
        if (found == replies_.end()) throw CommandError::launchFailed("no recording");
        if (const auto* error = std::get_if<CommandError>(&found->second)) throw *error;
        return std::get<std::string>(found->second);
    }

    bool ran(const std::string& verb) const {
        for (const auto& call : calls)
            if (!call.empty() && call.front() == verb) return true;
        return false;
    }

    std::vector<std::vector<std::string>> calls;
    std::vector<std::string> executables;

private:
    std::map<std::vector<std::string>, Reply> replies_;
};

class FakeDockerHost : public DockerHostProbing {
public:
    Platform platformName = Platform::macos;
    std::optional<std::string> home = "/Users/me";
    std::set<std::string> executables;
    std::map<std::string, std::string> texts;
    std::map<std::string, DockerFileFacts> files;
    std::map<std::string, DockerFileFacts> folders;
    std::vector<std::string> mounts{"/"};

    Platform platform() const override { return platformName; }
    std::optional<std::string> userHome() const override { return home; }
    bool isExecutableFile(const std::string& path) const override { return executables.contains(path); }
    std::optional<std::string> readTextFile(const std::string& path) const override { return lookup(texts, path); }
    std::optional<DockerFileFacts> regularFileFacts(const std::string& path) const override {
        return lookup(files, path);
    }
    std::optional<DockerFileFacts> folderFacts(const std::string& path) const override { return lookup(folders, path); }
    std::vector<std::string> mountPoints() const override { return mounts; }

private:
    template <class Map>
    static std::optional<typename Map::mapped_type> lookup(const Map& map, const std::string& key) {
        const auto found = map.find(key);
        if (found == map.end()) return std::nullopt;
        return found->second;
    }
};

}  // namespace corvel::testing
