#include "machine/DockerReading.h"

#include "docker/DockerClient.h"
#include "docker/LocalDockerHost.h"
#include "docker/RecordedDockerHost.h"

#include <memory>

namespace corvel {
namespace {

// Where a recorded machine's shell would have looked when the recording does not say.
constexpr const char* recordedDefaultPath = "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin";

std::vector<std::string> mountPoints(const StorageSnapshot& snapshot) {
    std::vector<std::string> result;
    for (const auto& volume : snapshot.volumes) result.push_back(volume.mountPoint);
    return result;
}

Environment liveEnvironment(const Environment& inherited) {
    Environment environment;
    for (const char* name : {"PATH", "HOME"})
        if (auto value = lookup(inherited, name)) environment[name] = *value;
    return environment;
}

Environment recordedEnvironment(const RecordedMachine& machine) {
    Environment environment{{"HOME", machine.home}, {"PATH", recordedDefaultPath}};
    const auto recorded = machine.document.find("environment");
    if (recorded != machine.document.end() && recorded->is_object())
        for (const auto& [name, value] : recorded->items())
            if (value.is_string()) environment[name] = value.get<std::string>();
    return environment;
}

}  // namespace

DockerReading DockerReading::read(Machine& machine, const StorageSnapshot& snapshot) {
    DockerReading reading;
    std::unique_ptr<DockerHostProbing> host;
    Environment environment;
    if (const auto* recording = machine.recording()) {
        try {
            host = std::make_unique<RecordedDockerHost>(
                recording->document, recording->directory, mountPoints(snapshot),
                [&machine](const std::string& tool) { return machine.toolInstalled(tool); });
        } catch (const RecordingError& error) {
            throw MachineError(std::string("--replay: ") + error.what());
        }
        environment = recordedEnvironment(*recording);
    } else {
        host = std::make_unique<LocalDockerHost>(mountPoints(snapshot));
        environment = liveEnvironment(machine.environment());
    }

    reading.platform = host->platform();
    auto client = DockerClient::make(machine.runner(ToolTimeout::inventory), environment, *host);
    if (!client) return reading;
    reading.executable = client->commandPolicy().executable;
    reading.inventory = client->inventory(machine.home(), machine.now());
    return reading;
}

std::string DockerReading::engineNotRunningTitle() {
    return "Docker engine not running";
}

std::string DockerReading::engineNotRunningHint(Platform platform, bool imageFound) {
    if (platform == Platform::linux)
        return std::string("Start the Docker engine (or Docker Desktop) to see images, containers and volumes.") +
               (imageFound ? " Its data is still measured from Linux." : "");
    return std::string("Start Docker Desktop to see images, containers and volumes.") +
           (imageFound ? " The disk image is still measured from macOS." : "");
}

}  // namespace corvel
