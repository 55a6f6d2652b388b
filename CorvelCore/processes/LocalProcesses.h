// The processes of this machine: read, signalled and started through the system's own
// interfaces, one file per system under platform/ (Linux: /proc; macOS: libproc), the parts both
// answer the same way under platform/posix/.
//
//   LocalProcesses local;
//   auto samples = ProcessSampler::measure(local);
//   local.send({pid, startTime}, ProcessSignal::terminate);
#pragma once

#include "processes/ProcessControlling.h"
#include "processes/ProcessSampling.h"

#include <cstdint>

namespace corvel {

class LocalProcesses : public ProcessSampling, public ProcessControlling {
public:
    std::vector<ProcessSample> sampleAll() override;
    void refineMemory(std::vector<ProcessSample>& samples) override;
    SignalResult send(const ProcessTarget& target, ProcessSignal signal) override;
    bool isRunning(const ProcessTarget& target) override;
    std::int32_t startDetached(const std::vector<std::string>& arguments) override;

    static std::int32_t ownPID();
    static std::uint32_t currentUid();
};

}  // namespace corvel
