// Test double for the Docker inventory: a host whose files exist only in memory (commands go
// through the test kit's ScriptedRunner).
#pragma once

#include "docker/DockerHostProbing.h"
#include "support/ScriptedRunner.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace corvel::testing {

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
