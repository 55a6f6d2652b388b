// Everything read from the Docker engine in one pass, plus the views the screens build from it.
// A value: built by DockerClient::inventory, never changed afterwards.
//
//   auto inventory = client->inventory(home, now);
//   if (!inventory.isReachable()) { /* show the disk image only */ }
//   for (const auto& project : inventory.projectUsage()) { … }
#pragma once

#include "common/ISO8601.h"
#include "docker/DockerBindMount.h"
#include "docker/DockerComposeProject.h"
#include "docker/DockerContainer.h"
#include "docker/DockerDatabase.h"
#include "docker/DockerDiskImage.h"
#include "docker/DockerDiskUsageLine.h"
#include "docker/DockerImage.h"
#include "docker/DockerNetwork.h"
#include "docker/DockerProjectUsage.h"
#include "docker/DockerVolume.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct DockerInventory {
    std::optional<std::string> serverVersion;
    std::optional<std::string> operatingSystem;
    std::optional<std::string> dockerRootDir;
    std::vector<DockerContainer> containers;
    std::vector<DockerImage> images;
    std::vector<DockerVolume> volumes;
    std::vector<DockerNetwork> networks;
    std::vector<DockerComposeProject> composeProjects;
    std::vector<DockerDiskUsageLine> diskUsage;
    std::int64_t buildCacheBytes = 0;
    std::optional<DockerDiskImage> diskImage;
    std::vector<std::string> errors;  // one line per failed command: label + ": " + description
    TimePoint capturedAt{};

    // No engine facts, empty lists, no build cache, no disk image, no errors.
    static DockerInventory empty(TimePoint capturedAt = TimePoint{});

    // The engine answered: only then are the lists meaningful.
    bool isReachable() const { return serverVersion.has_value(); }

    // Per Compose project ("Standalone" for the rest), largest total first.
    std::vector<DockerProjectUsage> projectUsage() const;
    // Containers whose image names a database engine, in container order.
    std::vector<DockerDatabase> databases() const;
    // Every container mount of type "bind", in container order.
    std::vector<DockerBindMount> bindMounts() const;

    // Sum of the engine's reclaimable figures over its disk-usage lines; none on overflow.
    std::optional<std::int64_t> reclaimableBytes() const;
    // The image a container runs, matched by reference, by implied ":latest" or by ID.
    const DockerImage* imageUsedBy(const DockerContainer& container) const;
    const DockerVolume* volume(const std::string& name) const;

    bool operator==(const DockerInventory&) const = default;
};

CORVEL_JSON_RECORD(DockerInventory, serverVersion, operatingSystem, dockerRootDir, containers, images, volumes, networks, composeProjects, diskUsage, buildCacheBytes, diskImage, errors, capturedAt)

}  // namespace corvel
