// One consent decision as the ledger keeps it: when, what (accepted, updated, withdrawn), under
// which terms (version and digest), from which version of Velmora, and the choice per scope.
//
//   ConsentRecord record{UUID::random(), now, ConsentRecord::Action::accepted, std::string(Terms::version),
//                        Terms::digest(), "0.1.0", {{ConsentScope::readStorage, true}}};
//   Json j = record;   // {"id", "date", "action", "termsVersion", "termsDigest", "appVersion", "scopes":
//   {"readStorage": true}}
#pragma once

#include "common/EnumTable.h"
#include "common/ISO8601.h"
#include "common/Json.h"
#include "consent/ConsentScope.h"

#include <map>
#include <string>

namespace corvel {

struct ConsentRecord {
    enum class Action { accepted, updated, withdrawn };

    std::string id;    // a new UUID for every record
    TimePoint date{};  // whole seconds
    Action action = Action::accepted;
    std::string termsVersion;
    std::string termsDigest;
    std::string appVersion;
    std::map<ConsentScope, bool> scopes;  // a missing scope counts as off

    bool operator==(const ConsentRecord&) const = default;
};

template <>
struct EnumTable<ConsentRecord::Action> {
    static constexpr std::array<EnumEntry<ConsentRecord::Action>, 3> entries{{
        {ConsentRecord::Action::accepted, "accepted", "Accepted", Tone::good},
        {ConsentRecord::Action::updated, "updated", "Updated", Tone::plain},
        {ConsentRecord::Action::withdrawn, "withdrawn", "Withdrawn", Tone::caution},
    }};
};

inline void to_json(Json& j, ConsentRecord::Action value) {
    enumToJson(j, value);
}
inline void from_json(const Json& j, ConsentRecord::Action& value) {
    enumFromJson(j, value, "ConsentRecord.Action");
}

// "scopes" is an object keyed by scope id; a key this version does not know is skipped, so a
// ledger written by a newer Velmora still reads.
void to_json(Json& j, const ConsentRecord& record);
void from_json(const Json& j, ConsentRecord& record);

}  // namespace corvel
