// How insights read on the command line, shared by `velmora insights` and `velmora status`.
#pragma once

#include "CliContext.h"
#include "insights/Insight.h"
#include "machine/MachineInsights.h"

#include <cstddef>
#include <string>
#include <vector>

namespace corvel::cli {

// The few most important insights under a heading, as `status` shows them.
void printTopInsights(CliContext& context, const MachineInsights& insights);

// At most `limit` insights, most important first, each with its detail, amount, risk and action.
void printInsights(CliContext& context, const std::vector<Insight>& insights, std::size_t limit,
                   const std::string& indent);

}  // namespace corvel::cli
