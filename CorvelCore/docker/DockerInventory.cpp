#include "docker/DockerInventory.h"

#include "common/CheckedArithmetic.h"
#include "common/Text.h"
#include "docker/DockerParser.h"

#include <algorithm>
#include <map>

namespace corvel {
namespace {

const std::string standaloneProject = "Standalone";

// "docker.io/library/postgres:16" and "postgres:16" name the same image.
std::string normalisedReference(std::string_view reference) {
    if (startsWith(reference, "docker.io/")) reference.remove_prefix(10);
    if (startsWith(reference, "library/")) reference.remove_prefix(8);
    return std::string(reference);
}

bool hasTag(std::string_view reference) {
    const auto slash = reference.rfind('/');
    const auto name = slash == std::string_view::npos ? reference : reference.substr(slash + 1);
    return name.find(':') != std::string_view::npos;
}

// Appends once, keeping first-seen order (lists shown to people keep the engine's order).
void appendDistinct(std::vector<std::string>& list, const std::string& value) {
    if (std::find(list.begin(), list.end(), value) == list.end()) list.push_back(value);
}

struct ProjectGroup {
    DockerProjectUsage usage;
    std::vector<std::string> volumeNames;
};

}  // namespace

DockerInventory DockerInventory::empty(TimePoint capturedAt) {
    DockerInventory inventory;
    inventory.capturedAt = capturedAt;
    return inventory;
}

const DockerImage* DockerInventory::imageUsedBy(const DockerContainer& container) const {
    auto reference = normalisedReference(container.image);
    if (const auto digest = reference.find('@'); digest != std::string::npos) reference.resize(digest);
    if (reference.empty()) return nullptr;
    for (const auto& image : images)
        if (normalisedReference(image.reference()) == reference) return &image;
    if (!hasTag(reference))
        for (const auto& image : images)
            if (normalisedReference(image.repository) == reference && image.tag == "latest") return &image;
    for (const auto& image : images)
        if (DockerParser::sameID(image.id, container.image)) return &image;
    return nullptr;
}

const DockerVolume* DockerInventory::volume(const std::string& name) const {
    for (const auto& candidate : volumes)
        if (candidate.name == name) return &candidate;
    return nullptr;
}

std::vector<DockerProjectUsage> DockerInventory::projectUsage() const {
    std::vector<ProjectGroup> groups;
    std::map<std::string, std::size_t> index;
    auto groupFor = [&](const std::string& name) -> ProjectGroup& {
        const auto [entry, inserted] = index.emplace(name, groups.size());
        if (inserted) {
            groups.emplace_back();
            groups.back().usage.name = name;
        }
        return groups[entry->second];
    };

    for (const auto& container : containers) {
        auto& group = groupFor(container.composeProject.value_or(standaloneProject));
        auto& usage = group.usage;
        usage.containers += 1;
        if (container.state == "running") usage.runningContainers += 1;
        if (container.sizeBytes) usage.containerBytes = checkedAdd(usage.containerBytes, *container.sizeBytes);
        if (const auto* image = imageUsedBy(container);
            image && std::find(usage.imageIDs.begin(), usage.imageIDs.end(), image->id) == usage.imageIDs.end()) {
            usage.imageIDs.push_back(image->id);
            usage.imageBytes = checkedAdd(usage.imageBytes, image->sizeBytes);
        }
        for (const auto& mount : container.mounts) {
            if (mount.type == "volume" && mount.name) appendDistinct(group.volumeNames, *mount.name);
            if (mount.type == "bind") appendDistinct(usage.bindSources, mount.source);
        }
        if (!usage.workingDirectory) usage.workingDirectory = container.composeWorkingDirectory;
    }
    // A project keeps its labelled volumes after "compose down" removed its containers; they
    // still cost space, so such a project is listed too.
    for (const auto& candidate : volumes)
        if (candidate.composeProject) appendDistinct(groupFor(*candidate.composeProject).volumeNames, candidate.name);

    std::vector<DockerProjectUsage> result;
    for (auto& group : groups) {
        group.usage.volumes = static_cast<std::int64_t>(group.volumeNames.size());
        for (const auto& name : group.volumeNames)
            if (const auto* known = volume(name); known && known->sizeBytes)
                group.usage.volumeBytes = checkedAdd(group.usage.volumeBytes, *known->sizeBytes);
        result.push_back(std::move(group.usage));
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const auto& a, const auto& b) { return a.totalBytes() > b.totalBytes(); });
    return result;
}

std::vector<DockerDatabase> DockerInventory::databases() const {
    std::vector<DockerDatabase> result;
    for (const auto& container : containers) {
        auto engine = DockerDatabase::engineFor(container.image);
        if (!engine) continue;
        DockerDatabase database{container, std::move(*engine), {}, 0};
        for (const auto& mount : container.mounts) {
            if (mount.type != "volume" || !mount.name) continue;
            appendDistinct(database.volumeNames, *mount.name);
        }
        for (const auto& name : database.volumeNames)
            if (const auto* known = volume(name); known && known->sizeBytes)
                database.volumeBytes = checkedAdd(database.volumeBytes, *known->sizeBytes);
        result.push_back(std::move(database));
    }
    return result;
}

std::vector<DockerBindMount> DockerInventory::bindMounts() const {
    std::vector<DockerBindMount> result;
    for (const auto& container : containers)
        for (const auto& mount : container.mounts)
            if (mount.type == "bind") result.push_back(DockerBindMount{container, mount});
    return result;
}

std::optional<std::int64_t> DockerInventory::reclaimableBytes() const {
    std::int64_t total = 0;
    for (const auto& line : diskUsage)
        if (__builtin_add_overflow(total, line.reclaimableBytes, &total)) return std::nullopt;
    return total;
}

}  // namespace corvel
