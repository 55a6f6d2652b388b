#include "processes/LiveOpenFiles.h"
#include "processes/ProcOpenFiles.h"

namespace corvel {

std::unique_ptr<OpenFileListing> liveOpenFileListing(CommandRunning&) {
    return std::make_unique<ProcOpenFiles>();
}

}  // namespace corvel
