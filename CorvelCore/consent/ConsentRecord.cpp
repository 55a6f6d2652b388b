#include "consent/ConsentRecord.h"

namespace corvel {

void to_json(Json& j, const ConsentRecord& record) {
    Json scopes = Json::object();
    for (const auto& [scope, granted] : record.scopes) scopes[std::string(rawValue(scope))] = granted;
    j = Json{{"id", record.id},
             {"date", record.date},
             {"action", record.action},
             {"termsVersion", record.termsVersion},
             {"termsDigest", record.termsDigest},
             {"appVersion", record.appVersion},
             {"scopes", std::move(scopes)}};
}

void from_json(const Json& j, ConsentRecord& record) {
    jsonfield::expectObject(j, "ConsentRecord");
    record.id = required<std::string>(j, "id");
    record.date = required<TimePoint>(j, "date");
    record.action = required<ConsentRecord::Action>(j, "action");
    record.termsVersion = required<std::string>(j, "termsVersion");
    record.termsDigest = required<std::string>(j, "termsDigest");
    record.appVersion = required<std::string>(j, "appVersion");
    const auto scopes = required<Json>(j, "scopes");
    if (!scopes.is_object()) throw DecodingError("key 'scopes' must be an object of booleans");
    record.scopes.clear();
    for (const auto& [key, value] : scopes.items()) {
        const auto scope = enumFromRaw<ConsentScope>(key);
        if (!scope) continue;
        record.scopes[*scope] = decodeValue<bool>(value, "scopes");
    }
}

}  // namespace corvel
