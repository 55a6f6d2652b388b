// The append-only record of a person's consent decisions, oldest first. Only the last record
// counts; the earlier ones are history. The ledger is a value: a front end loads it, asks it,
// records a decision and saves it.
//
//   auto path = ConsentLedger::defaultURL(machine.dataFolder());     // DATA/consent.json
//   ConsentLedger ledger = ConsentLedger::load(path);                 // never fails: unreadable = empty
//   if (!ledger.hasValidAcceptance()) ledger.record(ConsentRecord::Action::accepted,
//                                                   {{ConsentScope::readStorage, true}}, "0.1.0", now);
//   ledger.save(path);                                                // atomic; throws FileError
//   ledger.isGranted(ConsentScope::benchmark);
#pragma once

#include "common/Json.h"
#include "consent/ConsentRecord.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace corvel {

// Where a person stands with the current terms, for the one line a front end shows.
enum class ConsentState { notAccepted, accepted, withdrawn, termsChanged };

template <>
struct EnumTable<ConsentState> {
    static constexpr std::array<EnumEntry<ConsentState>, 4> entries{{
        {ConsentState::notAccepted, "notAccepted", "Not accepted", Tone::caution},
        {ConsentState::accepted, "accepted", "Accepted", Tone::good},
        {ConsentState::withdrawn, "withdrawn", "Withdrawn", Tone::caution},
        {ConsentState::termsChanged, "termsChanged", "Terms changed", Tone::caution},
    }};
};
CORVEL_ENUM_JSON(ConsentState)

struct ConsentLedger {
    static constexpr const char* fileName = "consent.json";

    std::vector<ConsentRecord> records;

    // The last record, or none when nothing was ever decided.
    std::optional<ConsentRecord> current() const;

    // The last record is an acceptance or update (not a withdrawal) of the current terms' digest,
    // with every required scope on.
    bool hasValidAcceptance() const;

    // accepted exactly when hasValidAcceptance; otherwise why not.
    ConsentState state() const;

    // Off unless there is a valid acceptance; then the last record's choice (missing = off).
    bool isGranted(ConsentScope scope) const;

    // Appends a decision under the current terms, its date cut to whole seconds, and returns it.
    // An acceptance or update without every required scope throws ConsentError and appends
    // nothing; a withdrawal is always recorded.
    const ConsentRecord& record(ConsentRecord::Action action, const std::map<ConsentScope, bool>& scopes,
                                const std::string& appVersion, TimePoint date);

    static std::filesystem::path defaultURL(const std::filesystem::path& dataFolder);

    // A missing, unreadable or undecodable file reads as an empty ledger (the person is asked
    // again, and the next save replaces the file).
    static ConsentLedger load(const std::filesystem::path& path);

    // Writes the whole ledger atomically; throws FileError.
    void save(const std::filesystem::path& path) const;

    bool operator==(const ConsentLedger&) const = default;
};

CORVEL_JSON_RECORD(ConsentLedger, records)

}  // namespace corvel
