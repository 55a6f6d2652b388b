// The desktop application's screens, as the command line reaches them. The system's own texts
// send a person to a screen ("Action: Analyze → Space", "run Verify in Disk Operations"); on the
// command line each such mention also names the command that does the same. JSON output keeps the
// texts exactly as the core wrote them.
//
//   out << insight.actionTitle << " → " << label(insight.destination)
//       << " (" << commandFor(insight.destination) << ")";
//   out << withCommandHints(assessment.summary);
#pragma once

#include "insights/Insight.h"

#include <string>

namespace corvel::cli {

std::string commandFor(Insight::Destination destination);

// `text` with the command added after each screen it names.
std::string withCommandHints(const std::string& text);

}  // namespace corvel::cli
