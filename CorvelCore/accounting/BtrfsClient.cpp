#include "accounting/BtrfsClient.h"

namespace corvel {

const CommandPolicy& BtrfsClient::policy() {
    static const CommandPolicy instance{
        executable, {{"subvolume", "list", "-s"}, {"filesystem", "du", "-s", "--raw"}, {"filesystem", "df", "-b"}}};
    return instance;
}

std::string BtrfsClient::listSnapshots(const std::string& mountPoint) const {
    return policy().run({"subvolume", "list", "-s", mountPoint}, runner);
}

std::string BtrfsClient::usage(const std::vector<std::string>& paths) const {
    std::vector<std::string> arguments{"filesystem", "du", "-s", "--raw"};
    // Paths are operands, never options, even when one begins with a dash.
    arguments.emplace_back("--");
    arguments.insert(arguments.end(), paths.begin(), paths.end());
    return policy().run(arguments, runner);
}

std::string BtrfsClient::chunkUsage(const std::string& mountPoint) const {
    return policy().run({"filesystem", "df", "-b", mountPoint}, runner);
}

}  // namespace corvel
