#include "storage/SmartctlClient.h"

#include "command/CommandError.h"

namespace corvel {

const CommandPolicy& SmartctlClient::policy() {
    static const CommandPolicy instance{executable, {{"-j", "-a"}, {"-j", "-H"}, {"-j", "-i"}, {"-j", "-A"}}};
    return instance;
}

SmartctlReport SmartctlClient::report(const std::string& devicePath) const {
    // The device is the one extra argument; anything that looks like an option is refused so
    // that a crafted device name cannot widen the query.
    if (devicePath.empty() || devicePath.front() == '-') return {};
    try {
        return SmartctlReport::decode(policy().run({"-j", "-a", devicePath}, runner));
    } catch (const CommandError& error) {
        if (error.kind() == CommandError::Kind::failed) return SmartctlReport::decode(error.text());
        return {};
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace corvel
