#include "consent/ConsentChoices.h"

#include "common/Text.h"

#include <algorithm>

namespace corvel::ConsentChoices {

std::map<ConsentScope, bool> forAcceptance(const std::vector<ConsentScope>& chosen) {
    std::map<ConsentScope, bool> scopes;
    for (const ConsentScope scope : allCases<ConsentScope>())
        scopes[scope] = isRequired(scope) || std::find(chosen.begin(), chosen.end(), scope) != chosen.end();
    return scopes;
}

std::map<ConsentScope, bool> withChanges(const ConsentLedger& ledger, const std::vector<Change>& changes) {
    std::map<ConsentScope, bool> scopes;
    const auto last = ledger.current();
    for (const ConsentScope scope : allCases<ConsentScope>()) {
        bool granted = false;
        if (last)
            if (const auto found = last->scopes.find(scope); found != last->scopes.end()) granted = found->second;
        scopes[scope] = granted;
    }
    for (const auto& [scope, granted] : changes) scopes[scope] = granted;
    return scopes;
}

std::optional<Change> parseChange(std::string_view text) {
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    const auto scope = enumFromRaw<ConsentScope>(trim(text.substr(0, equals)));
    const std::string value = toLower(trim(text.substr(equals + 1)));
    if (!scope) return std::nullopt;
    if (value == "on" || value == "true" || value == "yes") return Change{*scope, true};
    if (value == "off" || value == "false" || value == "no") return Change{*scope, false};
    return std::nullopt;
}

std::string scopeIDs() {
    std::vector<std::string> ids;
    for (const ConsentScope scope : allCases<ConsentScope>()) ids.emplace_back(rawValue(scope));
    return join(ids, ", ");
}

}  // namespace corvel::ConsentChoices
