#include "command/SystemProfilerClient.h"

namespace corvel {

const CommandPolicy& SystemProfilerClient::policy() {
    static const CommandPolicy instance{
        executable,
        {
            {"SPThunderboltDataType", "-json"},
            {"SPUSBHostDataType", "-json"},
            {"SPHardwareDataType", "SPPowerDataType", "SPDisplaysDataType", "SPUSBHostDataType", "-json"},
        }};
    return instance;
}

std::string SystemProfilerClient::thunderbolt() const {
    return policy().run({"SPThunderboltDataType", "-json"}, runner_);
}

}  // namespace corvel
