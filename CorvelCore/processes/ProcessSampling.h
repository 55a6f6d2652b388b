// Reads every running process once. The live machine's reader is LocalProcesses (one file per
// system under platform/); tests hand the sampler a fixed list.
//
//   std::vector<ProcessSample> now = sampling.sampleAll();
//   sampling.refineMemory(now);      // the exact memory figures, for the reading people see
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
    // Replaces the quick memory figure of sampleAll with the exact one where the system keeps a
    // costlier one (Linux: the proportional set size, for which the kernel walks every page
    // table), so that it is paid once per reading rather than on every sample.
    virtual void refineMemory(std::vector<ProcessSample>& samples) { (void)samples; }
};

}  // namespace corvel
