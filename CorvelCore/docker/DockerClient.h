// Reads the Docker engine through the docker program, and only reads: every command passes a
// policy whose allowed prefixes all end in "--format", so nothing that prunes, removes, stops or
// changes anything can run.
//
//   auto client = DockerClient::make(runner, environment, host);
//   if (!client) { /* "Docker CLI not found" */ }
//   DockerInventory inventory = client->inventory(home, now);   // never throws
#pragma once

#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"
#include "docker/DockerHostProbing.h"
#include "docker/DockerInventory.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

class DockerClient {
public:
    using Environment = std::map<std::string, std::string>;

    // The listing prefixes the docker program may be started with, in order.
    static const std::vector<std::vector<std::string>>& allowedPrefixes();
    static CommandPolicy policy(const std::string& executable);

    // The folders searched for the program, in order: PATH, then the usual install places.
    static std::vector<std::string> searchFolders(const Environment& environment, const DockerHostProbing& host);
    // The first "docker" in the search folders that is an executable file.
    static std::optional<std::string> locate(const Environment& environment, const DockerHostProbing& host);

    // No client when the program cannot be found.
    static std::optional<DockerClient> make(CommandRunning& runner, const Environment& environment,
                                            const DockerHostProbing& host);

    DockerClient(std::string executable, CommandRunning& runner, const DockerHostProbing& host);

    const CommandPolicy& commandPolicy() const { return policy_; }

    // Runs the listing commands one after another. A failed command adds one line to `errors`
    // and the rest goes on; an unreachable engine still yields the disk image.
    DockerInventory inventory(const std::string& home, TimePoint now) const;

private:
    CommandPolicy policy_;
    CommandRunning* runner_;
    const DockerHostProbing* host_;
};

}  // namespace corvel
