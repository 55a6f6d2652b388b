// Finds the file that holds the engine's data, so that its cost is shown even when the engine
// is stopped. On a Mac that is Docker Desktop's virtual disk (a custom location from its
// settings, else the default one); on Linux Docker Desktop's disk the same way, else the native
// engine's data folder.
//
//   auto image = DockerDiskImageLocator::locate(home, host);            // engine stopped
//   auto image = DockerDiskImageLocator::locate(home, host, "/srv/docker");  // root from docker info
#pragma once

#include "docker/DockerDiskImage.h"
#include "docker/DockerHostProbing.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel {

// One folder where the image may be, and how we came to look there.
struct DockerImageCandidate {
    std::string folder;
    std::string source;

    bool operator==(const DockerImageCandidate&) const = default;
};

namespace DockerDiskImageLocator {

// The folders that may hold Docker Desktop's disk image, in the order they are tried.
std::vector<DockerImageCandidate> candidates(const std::string& home, const DockerHostProbing& host);

// The first "Docker.raw" or "Docker.qcow2" in the candidate folders; on Linux, failing that,
// the native engine's data root (`dockerRootDir` when the engine told us, else the standard
// rootful and rootless locations). None when nothing is found.
std::optional<DockerDiskImage> locate(const std::string& home, const DockerHostProbing& host,
                                      const std::optional<std::string>& dockerRootDir = std::nullopt);

// The mount point, among `mountPoints`, of the volume that holds `path` (the longest one that
// contains it); none when no mount point does.
std::optional<std::string> mountPointHolding(const std::string& path, const std::vector<std::string>& mountPoints);

}  // namespace DockerDiskImageLocator
}  // namespace corvel
