#include "docker/DockerDiskImageLocator.h"

#include "common/Json.h"
#include "common/Text.h"

#include <array>
#include <string_view>

namespace corvel::DockerDiskImageLocator {
namespace {

constexpr std::array<std::string_view, 2> settingsFiles{"settings-store.json", "settings.json"};
// Docker Desktop has renamed its data-folder setting over the years; each name still occurs.
constexpr std::array<const char*, 4> settingsKeys{"DataFolder", "dataFolder", "CustomWslDistroDir",
                                                  "diskImageLocation"};
constexpr std::array<std::string_view, 2> imageNames{"Docker.raw", "Docker.qcow2"};

std::string joined(std::string_view folder, std::string_view name) {
    std::string path(folder);
    if (!endsWith(path, "/")) path += '/';
    path += name;
    return path;
}

std::string settingsFolder(const std::string& home, Platform platform) {
    return platform == Platform::macos ? home + "/Library/Group Containers/group.com.docker"
                                       : home + "/.docker/desktop";
}

std::string defaultImageFolder(const std::string& home, Platform platform) {
    return platform == Platform::macos ? home + "/Library/Containers/com.docker.docker/Data/vms/0/data"
                                       : home + "/.docker/desktop/vms/0/data";
}

// On a Mac the user's folders are firmlinked from the data volume, which is mounted apart from
// the sealed system volume; the image lives on the data volume even though its path does not say so.
std::string pathForMountLookup(const std::string& path, const DockerHostProbing& host,
                               const std::vector<std::string>& mountPoints) {
    constexpr std::string_view dataVolume = "/System/Volumes/Data";
    if (host.platform() != Platform::macos || startsWith(path, "/System/") || startsWith(path, "/Volumes/"))
        return path;
    for (const auto& mountPoint : mountPoints)
        if (mountPoint == dataVolume) return std::string(dataVolume) + path;
    return path;
}

std::optional<DockerDiskImage> imageAt(const std::string& path, const std::string& source,
                                       const DockerHostProbing& host) {
    const auto facts = host.regularFileFacts(path);
    if (!facts) return std::nullopt;
    return DockerDiskImage{path, facts->apparentBytes, facts->allocatedBytes, std::nullopt, source};
}

std::optional<DockerDiskImage> nativeEngineRoot(const std::string& home, const DockerHostProbing& host,
                                                const std::optional<std::string>& dockerRootDir) {
    std::vector<DockerImageCandidate> roots;
    if (dockerRootDir) {
        roots.push_back({*dockerRootDir, "Docker engine data root"});
    } else {
        roots.push_back({"/var/lib/docker", "Docker engine data root"});
        roots.push_back({home + "/.local/share/docker", "Docker rootless engine data root"});
    }
    for (const auto& root : roots)
        if (const auto facts = host.folderFacts(root.folder))
            return DockerDiskImage{root.folder, facts->apparentBytes, facts->allocatedBytes, std::nullopt, root.source};
    return std::nullopt;
}

}  // namespace

std::vector<DockerImageCandidate> candidates(const std::string& home, const DockerHostProbing& host) {
    const auto platform = host.platform();
    std::vector<DockerImageCandidate> result;
    const auto folder = settingsFolder(home, platform);
    for (const auto file : settingsFiles) {
        const auto contents = host.readTextFile(joined(folder, file));
        if (!contents) continue;
        const auto settings = Json::parse(*contents, nullptr, false);
        if (settings.is_discarded() || !settings.is_object()) continue;
        for (const char* key : settingsKeys) {
            const auto value = settings.find(key);
            if (value == settings.end() || !value->is_string()) continue;
            const auto location = trim(value->get_ref<const std::string&>());
            if (!location.empty())
                result.push_back({std::string(location), std::string("Docker Desktop setting ") + key});
        }
    }
    result.push_back({defaultImageFolder(home, platform), "Docker Desktop default location"});
    return result;
}

std::optional<DockerDiskImage> locate(const std::string& home, const DockerHostProbing& host,
                                      const std::optional<std::string>& dockerRootDir) {
    std::optional<DockerDiskImage> image;
    for (const auto& candidate : candidates(home, host)) {
        // A setting may name the image file itself rather than its folder.
        for (const auto name : imageNames)
            if (endsWith(candidate.folder, std::string("/") + std::string(name)))
                image = imageAt(candidate.folder, candidate.source, host);
        for (const auto name : imageNames) {
            if (image) break;
            image = imageAt(joined(candidate.folder, name), candidate.source, host);
        }
        if (image) break;
    }
    if (!image && host.platform() == Platform::linux) image = nativeEngineRoot(home, host, dockerRootDir);
    if (!image) return std::nullopt;

    const auto mountPoints = host.mountPoints();
    image->volumeMountPoint = mountPointHolding(pathForMountLookup(image->path, host, mountPoints), mountPoints);
    return image;
}

std::optional<std::string> mountPointHolding(const std::string& path, const std::vector<std::string>& mountPoints) {
    std::optional<std::string> best;
    for (const auto& mountPoint : mountPoints) {
        if (mountPoint.empty()) continue;
        const bool holds = (mountPoint == "/" && startsWith(path, "/")) || path == mountPoint ||
                           startsWith(path, joined(mountPoint, ""));
        if (holds && (!best || mountPoint.size() > best->size())) best = mountPoint;
    }
    return best;
}

}  // namespace corvel::DockerDiskImageLocator
