#include "processes/LiveOpenFiles.h"
#include "processes/LsofOpenFiles.h"

namespace corvel {

std::unique_ptr<OpenFileListing> liveOpenFileListing(CommandRunning& runner) {
    return std::make_unique<LsofOpenFiles>(runner);
}

}  // namespace corvel
