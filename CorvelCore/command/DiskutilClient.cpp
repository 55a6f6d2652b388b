#include "command/DiskutilClient.h"

namespace corvel {

const CommandPolicy& DiskutilClient::policy() {
    static const CommandPolicy instance{executable, {{"list"}, {"info"}, {"apfs", "list"}}};
    return instance;
}

std::string DiskutilClient::listPhysical() const { return policy().run({"list", "-plist", "physical"}, runner_); }

std::string DiskutilClient::info(const std::string& identifier) const {
    return policy().run({"info", "-plist", identifier}, runner_);
}

std::string DiskutilClient::apfsList() const { return policy().run({"apfs", "list", "-plist"}, runner_); }

}  // namespace corvel
