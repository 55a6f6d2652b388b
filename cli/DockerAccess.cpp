#include "DockerAccess.h"

#include "CliErrors.h"
#include "command/RecordedCommandRunner.h"
#include "docker/DockerClient.h"
#include "docker/LocalDockerHost.h"
#include "docker/RecordedDockerHost.h"

#include <cstdlib>
#include <memory>

namespace corvel::cli {
namespace {

// Where a recorded machine's shell would have looked when the recording does not say.
constexpr const char* recordedDefaultPath = "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin";

std::vector<std::string> mountPoints(const StorageSnapshot& snapshot) {
    std::vector<std::string> result;
    for (const auto& volume : snapshot.volumes) result.push_back(volume.mountPoint);
    return result;
}

DockerClient::Environment liveEnvironment() {
    DockerClient::Environment environment;
    for (const char* name : {"PATH", "HOME"})
        if (const char* value = std::getenv(name); value && *value) environment[name] = value;
    return environment;
}

DockerClient::Environment recordedEnvironment(const RecordedMachine& machine) {
    DockerClient::Environment environment{{"HOME", machine.home}, {"PATH", recordedDefaultPath}};
    const auto recorded = machine.document.find("environment");
    if (recorded != machine.document.end() && recorded->is_object())
        for (const auto& [name, value] : recorded->items())
            if (value.is_string()) environment[name] = value.get<std::string>();
    return environment;
}

}  // namespace

DockerReading readDocker(CliContext& context, const StorageSnapshot& snapshot) {
    DockerReading reading;
    std::unique_ptr<DockerHostProbing> host;
    DockerClient::Environment environment;
    if (const auto* machine = context.recording()) {
        try {
            host = std::make_unique<RecordedDockerHost>(
                machine->document, machine->directory, mountPoints(snapshot),
                [&context](const std::string& executable) { return context.toolInstalled(executable); });
        } catch (const RecordingError& error) {
            throw UsageError(std::string("--replay: ") + error.what());
        }
        environment = recordedEnvironment(*machine);
    } else {
        host = std::make_unique<LocalDockerHost>(mountPoints(snapshot));
        environment = liveEnvironment();
    }

    reading.platform = host->platform();
    auto client = DockerClient::make(context.runner(dockerTimeoutSeconds), environment, *host);
    if (!client) return reading;
    reading.executable = client->commandPolicy().executable;
    reading.inventory = client->inventory(context.home(), context.now());
    return reading;
}

std::string engineNotRunningTitle() {
    return "Docker engine not running";
}

std::string engineNotRunningHint(const std::string& platform, bool imageFound) {
    if (platform == "linux")
        return std::string("Start the Docker engine (or Docker Desktop) to see images, containers and volumes.") +
               (imageFound ? " Its data is still measured from Linux." : "");
    return std::string("Start Docker Desktop to see images, containers and volumes.") +
           (imageFound ? " The disk image is still measured from macOS." : "");
}

}  // namespace corvel::cli
