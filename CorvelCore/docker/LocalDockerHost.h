// The live DockerHostProbing: asks this machine's file system. The plain POSIX file facts are
// shared in platform/posix/, the rest is one implementation per platform under platform/<os>/;
// the mount points come from the mounted-volume list the caller already has.
#pragma once

#include "docker/DockerHostProbing.h"

namespace corvel {

class LocalDockerHost : public DockerHostProbing {
public:
    explicit LocalDockerHost(std::vector<std::string> mountPoints) : mountPoints_(std::move(mountPoints)) {}

    Platform platform() const override { return hostPlatform(); }
    std::optional<std::string> userHome() const override;
    bool isExecutableFile(const std::string& path) const override;
    std::optional<std::string> readTextFile(const std::string& path) const override;
    std::optional<DockerFileFacts> regularFileFacts(const std::string& path) const override;
    std::optional<DockerFileFacts> folderFacts(const std::string& path) const override;
    std::vector<std::string> mountPoints() const override { return mountPoints_; }

private:
    std::vector<std::string> mountPoints_;
};

}  // namespace corvel
