#include "processes/LsofOpenFiles.h"

#include "command/CommandError.h"
#include "processes/LsofOutputParser.h"

namespace corvel {

const CommandPolicy& LsofOpenFiles::policy() {
    static const CommandPolicy policy{executable, {{"-nP", "-w", "-F", "pcfn", "+f", "--"}}};
    return policy;
}

std::vector<std::string> LsofOpenFiles::arguments(const std::string& mountPoint) {
    return {"-nP", "-w", "-F", "pcfn", "+f", "--", mountPoint};
}

std::vector<ProcessUsage> LsofOpenFiles::usages(const std::string& path) {
    try {
        return LsofOutputParser::parse(policy().run(arguments(path), runner_));
    } catch (const CommandError& error) {
        // Status 1 also covers "some processes could not be examined"; whatever it did list came
        // back as the failure's message (it writes nothing else with -w).
        if (error.kind() == CommandError::Kind::failed && error.status() == 1)
            return LsofOutputParser::parse(error.text());
        throw;
    }
}

}  // namespace corvel
