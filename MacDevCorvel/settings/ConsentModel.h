// Where the person stands with consent, for the consent sheet and Settings › "Privacy & Consent":
// the ledger in the data folder, read and written through the core's ledger and choices exactly as
// `velmora consent` does. Every gated action of the screens asks refusal() first.
//
//   ConsentModel consent(machine);
//   if (consent.needsDecision()) showSheet();
//   consent.accept({ConsentScope::benchmark});       // reading storage is always on
//   consent.setScope(ConsentScope::benchmark, false);
//   consent.withdrawAll();
#pragma once

#include "consent/ConsentLedger.h"
#include "machine/Machine.h"

#include <QObject>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

// The core's one line when `scope` is not granted, with where the application grants it.
std::optional<std::string> consentRefusal(Machine& machine, ConsentScope scope);

class ConsentModel : public QObject {
    Q_OBJECT
public:
    explicit ConsentModel(Machine& machine, QObject* parent = nullptr);

    const ConsentLedger& ledger() const { return ledger_; }
    // First start, changed terms or a withdrawal: the sheet is shown.
    bool needsDecision() const { return !ledger_.hasValidAcceptance(); }
    // What went wrong saving the last decision (the ledger on disk is unchanged then).
    const std::string& error() const { return error_; }

    // Each records one decision and saves the ledger; false (and error()) when it could not.
    bool accept(const std::vector<ConsentScope>& chosen);
    bool setScope(ConsentScope scope, bool granted);
    bool withdrawAll();
    void reload();

Q_SIGNALS:
    void changed();

private:
    bool record(ConsentRecord::Action action, const std::map<ConsentScope, bool>& scopes);

    Machine& machine_;
    ConsentLedger ledger_;
    std::string error_;
};

}  // namespace corvel::desktop
