#include "storage/LsblkClient.h"

namespace corvel {

const CommandPolicy& LsblkClient::policy() {
    static const CommandPolicy instance{executable, {{"-J", "-b", "-O"}}};
    return instance;
}

std::string LsblkClient::listAll() const { return policy().run({"-J", "-b", "-O"}, runner); }

}  // namespace corvel
