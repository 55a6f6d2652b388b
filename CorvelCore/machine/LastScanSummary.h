// The last space scan's summary as the machine being looked at may use it. The data folder is
// this machine's: while replaying another machine, a scan of a folder outside the recorded home
// describes somewhere else, so it is ignored with a note, as is a summary that cannot be read.
// Shared by the insights and the accounting, so both ignore the same summaries the same way.
//
//   std::vector<std::string> notes;
//   auto summary = LastScanSummary::load(machine, notes);   // notes: "Last scan summary ignored: …"
#pragma once

#include "machine/Machine.h"
#include "space/SpaceSummary.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel::LastScanSummary {

std::optional<SpaceSummary> load(const Machine& machine, std::vector<std::string>& notes);

}  // namespace corvel::LastScanSummary
