#include "consent/ConsentGate.h"

namespace corvel::ConsentGate {
namespace {

std::string reason(const ConsentLedger& ledger) {
    switch (ledger.state()) {
        case ConsentState::accepted:
            return "it is switched off";
        case ConsentState::withdrawn:
            return "you withdrew your consent";
        case ConsentState::termsChanged:
            return "the terms changed since you accepted them";
        case ConsentState::notAccepted:
            break;
    }
    return "you have not accepted the terms yet";
}

}  // namespace

std::string grantCommand(const ConsentLedger& ledger, ConsentScope scope) {
    const std::string id(rawValue(scope));
    if (!ledger.hasValidAcceptance()) {
        if (isRequired(scope)) return "velmora consent accept";
        return "velmora consent accept --scope " + id;
    }
    return "velmora consent update --scope " + id + "=on";
}

std::optional<std::string> refusal(const ConsentLedger& ledger, ConsentScope scope) {
    if (ledger.isGranted(scope)) return std::nullopt;
    return "this needs your consent to “" + std::string(title(scope)) + "” (" + std::string(rawValue(scope)) +
           "), and " + reason(ledger) + ": run '" + grantCommand(ledger, scope) + "'";
}

}  // namespace corvel::ConsentGate
