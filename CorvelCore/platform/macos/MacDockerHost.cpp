// macOS side of LocalDockerHost (the shared POSIX file facts are in
// platform/posix/PosixDockerHost.cpp). Docker on a Mac always runs inside Docker Desktop's
// virtual machine, so its data is one disk image file and no folder is walked.
#include "docker/LocalDockerHost.h"

namespace corvel {

std::optional<DockerFileFacts> LocalDockerHost::folderFacts(const std::string&) const {
    return std::nullopt;
}

}  // namespace corvel
