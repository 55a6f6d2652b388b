// The one question every state-changing command family asks before it starts: does the ledger
// grant this scope under the current terms? Reading needs no ledger (asking to read is the
// request); changing disks, running the benchmark, registering the agent and acting on processes
// each need their scope.
//
//   if (auto refusal = ConsentGate::refusal(ledger, ConsentScope::diskOperations))
//       fail(*refusal);   // one line naming the scope and the command that grants it
#pragma once

#include "consent/ConsentLedger.h"

#include <optional>
#include <string>

namespace corvel::ConsentGate {

// The command a person runs to grant `scope`: an acceptance when there is no valid acceptance
// of the current terms, else an update that switches the scope on.
std::string grantCommand(const ConsentLedger& ledger, ConsentScope scope);

// Absent when `scope` is granted; otherwise one line that names the scope (title and id), says
// why (no acceptance, terms changed, withdrawn, or switched off) and gives grantCommand.
std::optional<std::string> refusal(const ConsentLedger& ledger, ConsentScope scope);

}  // namespace corvel::ConsentGate
