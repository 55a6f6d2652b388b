// `velmora consent`: the terms, the scopes and where the person stands; `accept`, `update`,
// `withdraw` record a decision in the ledger; `log` lists every decision.
#include "ConsentCommands.h"

#include "CliErrors.h"
#include "Commands.h"
#include "common/AtomicFile.h"
#include "common/Text.h"
#include "consent/ConsentChoices.h"
#include "consent/ConsentError.h"
#include "consent/ConsentGate.h"
#include "consent/Terms.h"

#include <memory>
#include <sstream>

namespace corvel::cli {
namespace {

std::filesystem::path ledgerPath(CliContext& context) {
    return ConsentLedger::defaultURL(context.machine().dataFolder());
}

// Words of `text` on lines of at most `width` characters, each prefixed by `indent`.
std::string wrapped(std::string_view text, std::size_t width, const std::string& indent) {
    std::istringstream words{std::string(text)};
    std::string result;
    std::string line;
    for (std::string word; words >> word;) {
        if (!line.empty() && line.size() + 1 + word.size() > width) {
            result += indent + line + '\n';
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    if (!line.empty()) result += indent + line + '\n';
    return result;
}

std::string scopesOn(const ConsentRecord& record) {
    std::vector<std::string> on;
    for (const auto& [scope, granted] : record.scopes)
        if (granted) on.emplace_back(rawValue(scope));
    return on.empty() ? "(none)" : join(on, ", ");
}

Json termsDocument() {
    Json scopes = Json::array();
    for (const ConsentScope scope : allCases<ConsentScope>())
        scopes.push_back({{"id", std::string(rawValue(scope))},
                          {"title", std::string(title(scope))},
                          {"explanation", std::string(explanation(scope))},
                          {"isRequired", isRequired(scope)}});
    return {{"version", std::string(Terms::version)},
            {"digest", Terms::digest()},
            {"summary", Terms::summary()},
            {"scopes", scopes}};
}

Json stateDocument(CliContext& context, const ConsentLedger& ledger) {
    Json granted = Json::object();
    for (const ConsentScope scope : allCases<ConsentScope>())
        granted[std::string(rawValue(scope))] = ledger.isGranted(scope);
    Json document{{"file", ledgerPath(context).string()},
                  {"terms", termsDocument()},
                  {"state", ledger.state()},
                  {"hasValidAcceptance", ledger.hasValidAcceptance()},
                  {"granted", granted}};
    document["current"] = ledger.current() ? Json(*ledger.current()) : Json(nullptr);
    return document;
}

std::string stateLine(const ConsentLedger& ledger) {
    const auto last = ledger.current();
    switch (ledger.state()) {
        case ConsentState::accepted:
            return "Accepted on " + ISO8601::format(last->date) + " (Velmora " + last->appVersion +
                   "). Change a scope with 'velmora consent update --scope ID=on|off'.";
        case ConsentState::withdrawn:
            return "Withdrawn on " + ISO8601::format(last->date) + ". Run 'velmora consent accept' to accept again.";
        case ConsentState::termsChanged:
            return "You accepted earlier terms (" + last->termsVersion + ") on " + ISO8601::format(last->date) +
                   ". Run 'velmora consent accept' to accept these.";
        case ConsentState::notAccepted:
            break;
    }
    return "Not accepted yet. Run 'velmora consent accept', adding --scope ID for each optional scope you allow.";
}

void printState(CliContext& context, const ConsentLedger& ledger) {
    const auto& style = context.style();
    auto& out = context.out();
    out << style.bold("Terms " + std::string(Terms::version)) << '\n';
    for (const auto& sentence : Terms::summary()) out << wrapped(sentence, 92, "  ");
    out << '\n' << style.bold("Scopes") << '\n';
    for (const ConsentScope scope : allCases<ConsentScope>()) {
        const bool on = ledger.isGranted(scope);
        const std::string mark = on ? style.tone(Tone::good, "on ") : style.dim("off");
        std::string heading = std::string(title(scope)) + " (" + std::string(rawValue(scope));
        heading += isRequired(scope) ? ", required)" : ")";
        out << "  " << mark << "  " << heading << '\n' << style.dim(wrapped(explanation(scope), 87, "       "));
    }
    out << '\n' << style.tone(toneOf(ledger.state()), stateLine(ledger)) << '\n';
}

void save(CliContext& context, const ConsentLedger& ledger) {
    try {
        ledger.save(ledgerPath(context));
    } catch (const FileError& error) {
        throw CommandFailure(error.what());
    }
}

// Records one decision and shows the result; a refused decision leaves the file untouched.
void recordAndShow(CliContext& context, ConsentLedger& ledger, ConsentRecord::Action action,
                   const std::map<ConsentScope, bool>& scopes) {
    try {
        ledger.record(action, scopes, VELMORA_VERSION, context.machine().now());
    } catch (const ConsentError& error) {
        throw CommandFailure(error.description());
    }
    save(context, ledger);
    if (context.json()) {
        context.printJson(stateDocument(context, ledger));
        return;
    }
    const auto& record = ledger.records.back();
    std::string summary;
    if (action == ConsentRecord::Action::withdrawn)
        summary = "Withdrawn: every scope is off.";
    else if (action == ConsentRecord::Action::accepted)
        summary = "Accepted the terms " + record.termsVersion + ". Allowed: " + scopesOn(record);
    else
        summary = "Updated. Allowed: " + scopesOn(record);
    context.out() << summary << '\n' << context.style().dim("Saved to " + ledgerPath(context).string()) << '\n';
}

ConsentScope scopeNamed(const std::string& word) {
    const auto scope = enumFromRaw<ConsentScope>(word);
    if (!scope) throw UsageError("unknown scope '" + word + "' (expected one of " + ConsentChoices::scopeIDs() + ")");
    return *scope;
}

}  // namespace

ConsentLedger loadConsent(CliContext& context) {
    return ConsentLedger::load(ledgerPath(context));
}

void requireConsent(CliContext& context, ConsentScope scope) {
    if (auto refusal = ConsentGate::refusal(loadConsent(context), scope)) throw CommandFailure(*refusal);
}

void registerConsentCommands(CLI::App& app, CliContext& context) {
    auto* consent = app.add_subcommand("consent", "Show the terms and what you allowed; accept, change or withdraw");

    auto* accept = consent->add_subcommand("accept", "Accept the terms (reading storage, plus each --scope)");
    auto acceptScopes = std::make_shared<std::vector<std::string>>();
    accept->add_option("--scope", *acceptScopes, "An optional scope to allow: " + ConsentChoices::scopeIDs())
        ->allow_extra_args(false)
        ->type_name("ID");
    accept->callback([&context, acceptScopes] {
        std::vector<ConsentScope> chosen;
        for (const auto& word : *acceptScopes) chosen.push_back(scopeNamed(word));
        auto ledger = loadConsent(context);
        recordAndShow(context, ledger, ConsentRecord::Action::accepted, ConsentChoices::forAcceptance(chosen));
    });

    auto* update = consent->add_subcommand("update", "Switch scopes on or off under your current acceptance");
    auto changes = std::make_shared<std::vector<std::string>>();
    update->add_option("--scope", *changes, "ID=on or ID=off; repeatable")
        ->allow_extra_args(false)
        ->type_name("ID=on|off")
        ->required();
    update->callback([&context, changes] {
        std::vector<ConsentChoices::Change> parsed;
        for (const auto& word : *changes) {
            const auto change = ConsentChoices::parseChange(word);
            if (!change)
                throw UsageError("--scope: '" + word + "' is not ID=on or ID=off (IDs: " + ConsentChoices::scopeIDs() +
                                 ")");
            parsed.push_back(*change);
        }
        auto ledger = loadConsent(context);
        if (!ledger.hasValidAcceptance())
            throw CommandFailure(
                "there is no acceptance of the current terms to update: run 'velmora consent accept' first");
        recordAndShow(context, ledger, ConsentRecord::Action::updated, ConsentChoices::withChanges(ledger, parsed));
    });

    auto* withdraw = consent->add_subcommand("withdraw", "Withdraw all consent: every scope off");
    withdraw->callback([&context] {
        auto ledger = loadConsent(context);
        recordAndShow(context, ledger, ConsentRecord::Action::withdrawn, {});
    });

    auto* log = consent->add_subcommand("log", "Every decision in the ledger, oldest first");
    log->callback([&context] {
        const auto ledger = loadConsent(context);
        if (context.json()) {
            context.printJson(Json{{"file", ledgerPath(context).string()}, {"ledger", ledger}});
            return;
        }
        if (ledger.records.empty()) {
            context.out() << "No consent decisions recorded yet.\n";
            return;
        }
        Table table;
        table.addRow({"DATE", "ACTION", "TERMS", "VELMORA", "SCOPES ON"});
        for (const auto& record : ledger.records) {
            std::string terms = record.termsVersion;
            if (record.termsDigest != Terms::digest()) terms += " (earlier wording)";
            table.addRow({ISO8601::format(record.date),
                          context.style().tone(toneOf(record.action), std::string(label(record.action))), terms,
                          record.appVersion, scopesOn(record)});
        }
        table.print(context.out());
    });

    consent->callback([&context, accept, update, withdraw, log] {
        if (accept->parsed() || update->parsed() || withdraw->parsed() || log->parsed()) return;
        const auto ledger = loadConsent(context);
        if (context.json()) {
            context.printJson(stateDocument(context, ledger));
            return;
        }
        printState(context, ledger);
    });
}

}  // namespace corvel::cli
