// The choices a front end records, built the same way everywhere: an acceptance switches on the
// required scope and the ones chosen, and writes every other scope as off; an update changes the
// named scopes of the current choice and keeps the rest. Scope changes are typed as "id=on".
//
//   ledger.record(ConsentRecord::Action::accepted, ConsentChoices::forAcceptance({ConsentScope::benchmark}), v, now);
//   auto change = ConsentChoices::parseChange("benchmark=off");   // {benchmark, false}; absent when malformed
//   ledger.record(ConsentRecord::Action::updated, ConsentChoices::withChanges(ledger, {*change}), v, now);
#pragma once

#include "consent/ConsentLedger.h"

#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace corvel::ConsentChoices {

using Change = std::pair<ConsentScope, bool>;

std::map<ConsentScope, bool> forAcceptance(const std::vector<ConsentScope>& chosen);

// The last record's choices (every scope listed, a missing one as off) with `changes` applied in
// order. Switching the required scope off is left to ConsentLedger::record to refuse.
std::map<ConsentScope, bool> withChanges(const ConsentLedger& ledger, const std::vector<Change>& changes);

// "id=on" or "id=off" (also true/false, yes/no); absent for anything else.
std::optional<Change> parseChange(std::string_view text);

// "readStorage, diskOperations, …": the ids a person may type, for help and error texts.
std::string scopeIDs();

}  // namespace corvel::ConsentChoices
