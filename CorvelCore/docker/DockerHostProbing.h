// The few facts about the host's files that the Docker inventory needs beyond the docker
// program's output: where the program is, Docker Desktop's settings, and how big the disk image
// is. Behind this seam so that tests and recorded machines need no real files.
#pragma once

#include "common/Platform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct DockerFileFacts {
    std::int64_t apparentBytes = 0;   // logical length (for a folder: the sum over its files)
    std::int64_t allocatedBytes = 0;  // blocks really allocated, each hard-linked file once

    bool operator==(const DockerFileFacts&) const = default;
};

class DockerHostProbing {
public:
    virtual ~DockerHostProbing() = default;

    // Decides where Docker Desktop and the engine keep their data.
    virtual Platform platform() const = 0;
    // The user's home folder from the platform, used when the environment has no HOME.
    virtual std::optional<std::string> userHome() const = 0;
    virtual bool isExecutableFile(const std::string& path) const = 0;
    // A small text file (a settings document); none when missing or unreadable.
    virtual std::optional<std::string> readTextFile(const std::string& path) const = 0;
    // Size facts of a regular file; none when it is not one.
    virtual std::optional<DockerFileFacts> regularFileFacts(const std::string& path) const = 0;
    // Size facts of a whole folder tree, staying on its device; none when it is missing or
    // cannot be read.
    virtual std::optional<DockerFileFacts> folderFacts(const std::string& path) const = 0;
    // Mount points of the mounted volumes, to tell which volume holds a path.
    virtual std::vector<std::string> mountPoints() const = 0;
};

}  // namespace corvel
