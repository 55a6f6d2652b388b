// Reads every running process once. The live machine's reader is LocalProcesses (one file per
// system under platform/); tests hand the sampler a fixed list.
//
//   std::vector<ProcessSample> now = sampling.sampleAll();
#pragma once

#include "processes/ProcessSample.h"

#include <vector>

namespace corvel {

class ProcessSampling {
public:
    virtual ~ProcessSampling() = default;
    // Every process the system lists, in pid order, with cpuPercent left at 0. A process that
    // exits between listing and reading is skipped; one that cannot be read in full (another
    // user's) is returned with what could be read. Never throws for either.
    virtual std::vector<ProcessSample> sampleAll() = 0;
};

}  // namespace corvel
