#include "docker/DockerClient.h"

#include "command/CommandError.h"
#include "common/Text.h"
#include "docker/DockerDiskImageLocator.h"
#include "docker/DockerParser.h"
#include "storage/DiskutilParseError.h"

#include <exception>

namespace corvel {
namespace {

const std::string jsonFormat = "{{json .}}";

// Runs one listing command; a failure becomes a line of `errors` and no output.
class Step {
public:
    Step(const CommandPolicy& policy, CommandRunning& runner, DockerInventory& inventory)
        : policy_(policy), runner_(runner), inventory_(inventory) {}

    std::optional<std::string> run(const std::string& label, const std::vector<std::string>& arguments) {
        try {
            return policy_.run(arguments, runner_);
        } catch (const CommandError& error) {
            fail(label, error.description());
        } catch (const std::exception& error) {
            fail(label, error.what());
        }
        return std::nullopt;
    }

    void fail(const std::string& label, const std::string& description) {
        inventory_.errors.push_back(label + ": " + description);
    }

    // Lines of a one-object-per-line listing that could not be read, each as its own error.
    void reportUnreadable(const std::string& label, std::string_view output) {
        for (const auto& problem : DockerParser::unreadableLines(output)) fail(label, problem);
    }
    void reportDocument(const std::string& label, std::string_view output, bool arrayAllowed) {
        if (const auto problem = DockerParser::documentProblem(output, arrayAllowed)) fail(label, *problem);
    }

private:
    const CommandPolicy& policy_;
    CommandRunning& runner_;
    DockerInventory& inventory_;
};

template <class Map>
auto findByID(const Map& map, const std::string& id) {
    auto found = map.find(id);
    if (found != map.end()) return found;
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        if (DockerParser::sameID(entry->first, id)) return entry;
    return map.end();
}

}  // namespace

const std::vector<std::vector<std::string>>& DockerClient::allowedPrefixes() {
    static const std::vector<std::vector<std::string>> prefixes{
        {"version", "--format"},
        {"info", "--format"},
        {"ps", "-a", "--no-trunc", "--format"},
        {"images", "--format"},
        {"volume", "ls", "--format"},
        {"network", "ls", "--format"},
        {"compose", "ls", "-a", "--format"},
        {"system", "df", "--format"},
        {"system", "df", "-v", "--format"},
        {"container", "inspect", "--format"},
    };
    return prefixes;
}

CommandPolicy DockerClient::policy(const std::string& executable) {
    return CommandPolicy{executable, allowedPrefixes()};
}

std::vector<std::string> DockerClient::searchFolders(const Environment& environment, const DockerHostProbing& host) {
    std::vector<std::string> folders;
    if (const auto path = environment.find("PATH"); path != environment.end())
        for (const auto& entry : split(path->second, ':'))
            if (!entry.empty()) folders.push_back(entry);
    folders.emplace_back("/usr/local/bin");
    folders.emplace_back("/opt/homebrew/bin");
    std::optional<std::string> home;
    if (const auto entry = environment.find("HOME"); entry != environment.end() && !entry->second.empty())
        home = entry->second;
    else
        home = host.userHome();
    if (home) folders.push_back(*home + "/.docker/bin");
    folders.emplace_back("/Applications/Docker.app/Contents/Resources/bin");
    return folders;
}

std::optional<std::string> DockerClient::locate(const Environment& environment, const DockerHostProbing& host) {
    for (const auto& folder : searchFolders(environment, host)) {
        const auto candidate = endsWith(folder, "/") ? folder + "docker" : folder + "/docker";
        if (host.isExecutableFile(candidate)) return candidate;
    }
    return std::nullopt;
}

std::optional<DockerClient> DockerClient::make(CommandRunning& runner, const Environment& environment,
                                               const DockerHostProbing& host) {
    auto executable = locate(environment, host);
    if (!executable) return std::nullopt;
    return DockerClient(std::move(*executable), runner, host);
}

DockerClient::DockerClient(std::string executable, CommandRunning& runner, const DockerHostProbing& host)
    : policy_(policy(executable)), runner_(&runner), host_(&host) {}

DockerInventory DockerClient::inventory(const std::string& home, TimePoint now) const {
    DockerInventory inventory = DockerInventory::empty(now);
    Step step(policy_, *runner_, inventory);

    if (const auto output = step.run("docker info", {"info", "--format", jsonFormat})) {
        try {
            const auto info = DockerParser::engineInfo(*output);
            inventory.serverVersion = info.serverVersion;
            inventory.operatingSystem = info.operatingSystem;
            inventory.dockerRootDir = info.dockerRootDir;
        } catch (const DiskutilParseError& error) {
            step.fail("docker info", error.description());
        }
    }
    if (!inventory.isReachable()) {
        // Nothing else can answer without the engine, but the disk image can still be measured.
        inventory.diskImage = DockerDiskImageLocator::locate(home, *host_);
        return inventory;
    }

    std::optional<Json> verbose;
    if (const auto output = step.run("docker system df -v", {"system", "df", "-v", "--format", jsonFormat})) {
        verbose = DockerParser::verbose(*output);
        step.reportDocument("docker system df -v", *output, false);
    }

    if (const auto output = step.run("docker ps", {"ps", "-a", "--no-trunc", "--format", jsonFormat})) {
        inventory.containers = DockerParser::containers(*output);
        step.reportUnreadable("docker ps", *output);
        // The listing's own size is only filled when sizes were asked for; the verbose facts
        // always carry them, so they win.
        const auto sizes = DockerParser::containerSizes(verbose);
        for (auto& container : inventory.containers)
            if (const auto found = findByID(sizes, container.id); found != sizes.end())
                container.sizeBytes = found->second;
    }

    if (!inventory.containers.empty()) {
        std::vector<std::string> arguments{"container", "inspect", "--format",
                                           "{\"id\":{{json .Id}},\"mounts\":{{json .Mounts}}}"};
        for (const auto& container : inventory.containers) arguments.push_back(container.id);
        if (const auto output = step.run("docker inspect", arguments)) {
            const auto mounts = DockerParser::mounts(*output);
            step.reportUnreadable("docker inspect", *output);
            for (auto& container : inventory.containers)
                if (const auto found = findByID(mounts, container.id); found != mounts.end())
                    container.mounts = found->second;
        }
    }

    if (const auto output = step.run("docker images", {"images", "--format", jsonFormat})) {
        inventory.images = DockerParser::images(*output, verbose);
        step.reportUnreadable("docker images", *output);
    }

    if (const auto output = step.run("docker volume ls", {"volume", "ls", "--format", jsonFormat})) {
        inventory.volumes = DockerParser::volumes(*output);
        step.reportUnreadable("docker volume ls", *output);
        const auto facts = DockerParser::volumeSizes(verbose);
        for (auto& volume : inventory.volumes)
            if (const auto found = facts.find(volume.name); found != facts.end()) {
                if (found->second.sizeBytes) volume.sizeBytes = found->second.sizeBytes;
                if (found->second.links) volume.links = found->second.links;
            }
    }

    if (const auto output = step.run("docker network ls", {"network", "ls", "--format", jsonFormat})) {
        inventory.networks = DockerParser::networks(*output);
        step.reportUnreadable("docker network ls", *output);
    }

    if (const auto output = step.run("docker compose ls", {"compose", "ls", "-a", "--format", "json"})) {
        inventory.composeProjects = DockerParser::composeProjects(*output);
        // Older releases print one object per line instead of one array.
        if (DockerParser::documentProblem(*output, true)) step.reportUnreadable("docker compose ls", *output);
    }

    if (const auto output = step.run("docker system df", {"system", "df", "--format", jsonFormat})) {
        inventory.diskUsage = DockerParser::diskUsage(*output);
        step.reportUnreadable("docker system df", *output);
    }

    inventory.buildCacheBytes = DockerParser::buildCacheBytes(verbose);
    inventory.diskImage = DockerDiskImageLocator::locate(home, *host_, inventory.dockerRootDir);
    return inventory;
}

}  // namespace corvel
