#include "settings/ConsentModel.h"

#include "common/AtomicFile.h"
#include "consent/ConsentChoices.h"
#include "consent/ConsentError.h"
#include "consent/ConsentGate.h"

namespace corvel::desktop {

std::optional<std::string> consentRefusal(Machine& machine, ConsentScope scope) {
    const auto ledger = ConsentLedger::load(ConsentLedger::defaultURL(machine.dataFolder()));
    auto refusal = ConsentGate::refusal(ledger, scope);
    if (refusal) *refusal += " (or allow it in Settings, Privacy & Consent)";
    return refusal;
}

ConsentModel::ConsentModel(Machine& machine, QObject* parent) : QObject(parent), machine_(machine) {
    reload();
}

void ConsentModel::reload() {
    ledger_ = ConsentLedger::load(ConsentLedger::defaultURL(machine_.dataFolder()));
    Q_EMIT changed();
}

bool ConsentModel::accept(const std::vector<ConsentScope>& chosen) {
    return record(ConsentRecord::Action::accepted, ConsentChoices::forAcceptance(chosen));
}

bool ConsentModel::setScope(ConsentScope scope, bool granted) {
    if (!ledger_.hasValidAcceptance()) {
        // A scope switched on before any acceptance is an acceptance of the terms with it.
        if (!granted) return true;
        return accept({scope});
    }
    return record(ConsentRecord::Action::updated, ConsentChoices::withChanges(ledger_, {{scope, granted}}));
}

bool ConsentModel::withdrawAll() {
    return record(ConsentRecord::Action::withdrawn, {});
}

bool ConsentModel::record(ConsentRecord::Action action, const std::map<ConsentScope, bool>& scopes) {
    auto next = ledger_;
    try {
        next.record(action, scopes, VELMORA_VERSION, machine_.now());
        next.save(ConsentLedger::defaultURL(machine_.dataFolder()));
    } catch (const ConsentError& problem) {
        error_ = problem.description();
        Q_EMIT changed();
        return false;
    } catch (const FileError& problem) {
        error_ = problem.what();
        Q_EMIT changed();
        return false;
    }
    error_.clear();
    ledger_ = std::move(next);
    Q_EMIT changed();
    return true;
}

}  // namespace corvel::desktop
