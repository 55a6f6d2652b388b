#include "machine/LastScanSummary.h"

#include "common/PathText.h"

namespace corvel::LastScanSummary {

std::optional<SpaceSummary> load(const Machine& machine, std::vector<std::string>& notes) {
    std::string problem;
    auto summary = SpaceSummary::load(machine.dataFolder(), &problem);
    if (const RecordedMachine* recording = machine.recording();
        summary && recording && !isWithin(summary->root, recording->home)) {
        notes.push_back("Last scan summary ignored: it covers " + summary->root +
                        ", which is not on the recorded machine");
        return std::nullopt;
    }
    if (!summary && !problem.empty()) notes.push_back("Last scan summary ignored: " + problem);
    return summary;
}

}  // namespace corvel::LastScanSummary
