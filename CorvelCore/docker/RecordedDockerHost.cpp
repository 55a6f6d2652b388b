#include "docker/RecordedDockerHost.h"

#include "command/RecordedCommandRunner.h"
#include "common/AtomicFile.h"

namespace corvel {
namespace {

std::map<std::string, DockerFileFacts> decodeFacts(const Json& host, const char* key) {
    std::map<std::string, DockerFileFacts> result;
    const auto found = host.find(key);
    if (found == host.end()) return result;
    if (!found->is_object()) throw DecodingError(std::string("key '") + key + "' must be an object");
    for (const auto& [path, facts] : found->items())
        result.emplace(path, DockerFileFacts{required<std::int64_t>(facts, "apparentBytes"),
                                             required<std::int64_t>(facts, "allocatedBytes")});
    return result;
}

}  // namespace

RecordedDockerHost::RecordedDockerHost(const Json& machine, const std::filesystem::path& directory,
                                       std::vector<std::string> mountPoints, InstalledTest isInstalled)
    : mountPoints_(std::move(mountPoints)), isInstalled_(std::move(isInstalled)) {
    const auto machineFile = (directory / "machine.json").string();
    try {
        platform_ = valueOr<Platform>(machine, "platform", Platform::macos);
        home_ = optionalValue<std::string>(machine, "home");
        const auto host = machine.find("dockerHost");
        if (host == machine.end()) return;
        if (!host->is_object()) throw DecodingError("key 'dockerHost' must be an object");
        files_ = decodeFacts(*host, "files");
        folders_ = decodeFacts(*host, "folders");
        if (const auto texts = host->find("textFiles"); texts != host->end()) {
            if (!texts->is_object()) throw DecodingError("key 'textFiles' must be an object");
            for (const auto& [path, name] : texts->items()) {
                if (!name.is_string()) throw DecodingError("textFiles entry '" + path + "' must name a file");
                const auto file = directory / name.get<std::string>();
                auto contents = AtomicFile::read(file);
                if (!contents)
                    throw DecodingError("textFiles entry '" + path + "' names a missing file " + file.string());
                textFiles_.emplace(path, std::move(*contents));
            }
        }
    } catch (const DecodingError& error) {
        throw RecordingError(machineFile + ": dockerHost: " + error.what());
    } catch (const std::runtime_error& error) {
        throw RecordingError(machineFile + ": " + error.what());
    }
}

std::optional<std::string> RecordedDockerHost::readTextFile(const std::string& path) const {
    const auto found = textFiles_.find(path);
    if (found == textFiles_.end()) return std::nullopt;
    return found->second;
}

std::optional<DockerFileFacts> RecordedDockerHost::regularFileFacts(const std::string& path) const {
    const auto found = files_.find(path);
    if (found == files_.end()) return std::nullopt;
    return found->second;
}

std::optional<DockerFileFacts> RecordedDockerHost::folderFacts(const std::string& path) const {
    const auto found = folders_.find(path);
    if (found == folders_.end()) return std::nullopt;
    return found->second;
}

}  // namespace corvel
