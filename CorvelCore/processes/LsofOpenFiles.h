// The open-file lister on macOS (and on recorded machines of any platform): `/usr/sbin/lsof`,
// once per mount point, through a policy that allows exactly the one argument list we use.
//
//   LsofOpenFiles lister(machine.runner(ToolTimeout::inspection));
//   auto usages = lister.usages("/Volumes/Backup");   // throws CommandError when lsof cannot run
#pragma once

#include "command/CommandPolicy.h"
#include "processes/OpenFileListing.h"

#include <string>
#include <vector>

namespace corvel {

class LsofOpenFiles : public OpenFileListing {
public:
    static constexpr const char* executable = "/usr/sbin/lsof";
    static const CommandPolicy& policy();
    // ["-nP", "-w", "-F", "pcfn", "+f", "--", mountPoint]
    static std::vector<std::string> arguments(const std::string& mountPoint);

    explicit LsofOpenFiles(CommandRunning& runner) : runner_(runner) {}

    // lsof exits with 1 when it found nothing to list; that is an empty answer, not a failure.
    // Any other failure (not installed, timed out) throws CommandError.
    std::vector<ProcessUsage> usages(const std::string& path) override;

private:
    CommandRunning& runner_;
};

}  // namespace corvel
