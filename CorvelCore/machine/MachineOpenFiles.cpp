#include "machine/MachineOpenFiles.h"

#include "processes/LiveOpenFiles.h"
#include "processes/LsofOpenFiles.h"

namespace corvel::MachineOpenFiles {

std::unique_ptr<OpenFileListing> lister(Machine& machine) {
    auto& runner = machine.runner(ToolTimeout::inspection);
    if (machine.isRecorded()) return std::make_unique<LsofOpenFiles>(runner);
    return liveOpenFileListing(runner);
}

}  // namespace corvel::MachineOpenFiles
