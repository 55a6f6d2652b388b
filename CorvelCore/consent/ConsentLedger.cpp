#include "consent/ConsentLedger.h"

#include "common/AtomicFile.h"
#include "common/UUID.h"
#include "consent/ConsentError.h"
#include "consent/Terms.h"

namespace corvel {
namespace {

bool hasRequiredScopes(const std::map<ConsentScope, bool>& scopes) {
    for (const ConsentScope scope : allCases<ConsentScope>()) {
        if (!isRequired(scope)) continue;
        const auto found = scopes.find(scope);
        if (found == scopes.end() || !found->second) return false;
    }
    return true;
}

}  // namespace

std::optional<ConsentRecord> ConsentLedger::current() const {
    if (records.empty()) return std::nullopt;
    return records.back();
}

bool ConsentLedger::hasValidAcceptance() const {
    if (records.empty()) return false;
    const auto& last = records.back();
    if (last.action == ConsentRecord::Action::withdrawn) return false;
    if (last.termsDigest != Terms::digest()) return false;
    return hasRequiredScopes(last.scopes);
}

ConsentState ConsentLedger::state() const {
    if (hasValidAcceptance()) return ConsentState::accepted;
    if (records.empty()) return ConsentState::notAccepted;
    const auto& last = records.back();
    if (last.action == ConsentRecord::Action::withdrawn) return ConsentState::withdrawn;
    if (last.termsDigest != Terms::digest()) return ConsentState::termsChanged;
    return ConsentState::notAccepted;
}

bool ConsentLedger::isGranted(ConsentScope scope) const {
    if (!hasValidAcceptance()) return false;
    const auto& scopes = records.back().scopes;
    const auto found = scopes.find(scope);
    return found != scopes.end() && found->second;
}

const ConsentRecord& ConsentLedger::record(ConsentRecord::Action action, const std::map<ConsentScope, bool>& scopes,
                                           const std::string& appVersion, TimePoint date) {
    if (action != ConsentRecord::Action::withdrawn && !hasRequiredScopes(scopes))
        throw ConsentError::requiredScopeMissing();
    // floor, not a cast toward zero: a date before 1970 must not move forward.
    const auto whole = std::chrono::floor<std::chrono::seconds>(date);
    records.push_back(ConsentRecord{UUID::random(), std::chrono::time_point_cast<TimePoint::duration>(whole), action,
                                    std::string(Terms::version), Terms::digest(), appVersion, scopes});
    return records.back();
}

std::filesystem::path ConsentLedger::defaultURL(const std::filesystem::path& dataFolder) {
    return dataFolder / fileName;
}

ConsentLedger ConsentLedger::load(const std::filesystem::path& path) {
    try {
        const auto text = AtomicFile::read(path);
        if (!text) return {};
        return parseJsonText(*text, path.string()).get<ConsentLedger>();
    } catch (const FileError&) {
    } catch (const DecodingError&) {
    } catch (const Json::exception&) {
    }
    // Asking again is the safe reading of a ledger we cannot trust.
    return {};
}

void ConsentLedger::save(const std::filesystem::path& path) const {
    AtomicFile::write(path, Json(*this).dump(2) + "\n");
}

}  // namespace corvel
