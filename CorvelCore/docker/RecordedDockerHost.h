// The DockerHostProbing of a recorded machine: the docker program counts as installed where
// recorded commands run it, and the few host files Docker needs come from the machine's
// "dockerHost" object, so replay touches no real file:
//
//   "dockerHost": {
//     "textFiles": {"/Users/me/Library/Group Containers/group.com.docker/settings-store.json": "docker-settings.json"},
//     "files":     {"/Users/me/Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw":
//                   {"apparentBytes": 68719476736, "allocatedBytes": 21474836480}},
//     "folders":   {"/var/lib/docker": {"apparentBytes": 9000000000, "allocatedBytes": 8000000000}}
//   }
//
// "textFiles" name files beside machine.json. A malformed object is a RecordingError naming the file.
#pragma once

#include "common/Json.h"
#include "docker/DockerHostProbing.h"

#include <filesystem>
#include <functional>
#include <map>

namespace corvel {

class RecordedDockerHost : public DockerHostProbing {
public:
    using InstalledTest = std::function<bool(const std::string& executable)>;

    // `machine` is the whole machine.json document, `directory` the folder holding it.
    RecordedDockerHost(const Json& machine, const std::filesystem::path& directory,
                       std::vector<std::string> mountPoints, InstalledTest isInstalled);

    Platform platform() const override { return platform_; }
    std::optional<std::string> userHome() const override { return home_; }
    bool isExecutableFile(const std::string& path) const override { return isInstalled_ && isInstalled_(path); }
    std::optional<std::string> readTextFile(const std::string& path) const override;
    std::optional<DockerFileFacts> regularFileFacts(const std::string& path) const override;
    std::optional<DockerFileFacts> folderFacts(const std::string& path) const override;
    std::vector<std::string> mountPoints() const override { return mountPoints_; }

private:
    Platform platform_ = Platform::macos;
    std::optional<std::string> home_;
    std::map<std::string, std::string> textFiles_;
    std::map<std::string, DockerFileFacts> files_;
    std::map<std::string, DockerFileFacts> folders_;
    std::vector<std::string> mountPoints_;
    InstalledTest isInstalled_;
};

}  // namespace corvel
