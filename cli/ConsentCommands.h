// The consent gate as the command line asks it: every state-changing command family calls
// requireConsent before it starts, with the scope that covers it.
//
//   requireConsent(context, ConsentScope::diskOperations);   // throws CommandFailure (exit 1)
#pragma once

#include "CliContext.h"
#include "consent/ConsentLedger.h"

namespace corvel::cli {

// The ledger in the data folder ("consent.json"; unreadable reads as empty).
ConsentLedger loadConsent(CliContext& context);

// Returns when `scope` is granted under the current terms; otherwise throws CommandFailure with
// one line naming the scope and the command that grants it.
void requireConsent(CliContext& context, ConsentScope scope);

}  // namespace corvel::cli
