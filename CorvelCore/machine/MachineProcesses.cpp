#include "machine/MachineProcesses.h"

#include "processes/AppLauncher.h"
#include "processes/DesktopApplications.h"
#include "processes/LocalProcesses.h"
#include "processes/ProcessSampler.h"

namespace corvel::MachineProcesses {
namespace {

void requireLive(const Machine& machine) {
    if (!isAvailable(machine)) throw MachineError(replayText());
}

}  // namespace

bool isAvailable(const Machine& machine) {
    return !machine.isRecorded();
}

std::string replayText() {
    return "a recorded machine has no live processes: processes are read from this machine only (leave out --replay)";
}

ProcessGroupingContext groupingContext(const Machine& machine) {
    ProcessGroupingContext context;
    context.platform = machine.platform();
    context.currentUid = LocalProcesses::currentUid();
    if (context.platform == Platform::linux)
        context.desktopApplications = DesktopApplications::read(machine.environment(), machine.home());
    return context;
}

Reading read(Machine& machine, std::chrono::milliseconds interval) {
    requireLive(machine);
    LocalProcesses local;
    Reading reading;
    reading.interval = interval;
    reading.samples = ProcessSampler::measure(local, interval);
    reading.groups = ProcessGrouping::group(reading.samples, groupingContext(machine));
    return reading;
}

ProcessActionResult perform(Machine& machine, ProcessAction action, const ProcessGroup& group, const Reading& reading,
                            const ProcessActionTiming& timing) {
    requireLive(machine);
    LocalProcesses local;
    AppLauncher launcher(machine.platform(), machine.runner(ToolTimeout::inspection), local);
    ProcessActionLog log(machine.dataFolder());
    const ProcessActionRequest request{action, group, ProcessGrouping::targets(group, reading.samples), ownPID()};
    return ProcessActions::perform(request, local, launcher, log, machine.now(), timing);
}

std::int32_t ownPID() {
    return LocalProcesses::ownPID();
}

}  // namespace corvel::MachineProcesses
