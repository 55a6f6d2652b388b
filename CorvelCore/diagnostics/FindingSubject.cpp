#include "diagnostics/FindingSubject.h"

namespace corvel {

namespace {

const char* kindKey(FindingSubject::Kind kind) { return kind == FindingSubject::Kind::disk ? "disk" : "volume"; }

}  // namespace

std::string FindingSubject::id() const { return std::string(kindKey(kind)) + ":" + payload; }

void to_json(Json& j, const FindingSubject& subject) {
    j = Json::object();
    j[kindKey(subject.kind)] = Json{{"_0", subject.payload}};
}

void from_json(const Json& j, FindingSubject& subject) {
    if (!j.is_object() || j.size() != 1)
        throw DecodingError("a finding subject must be an object with the single key 'disk' or 'volume'");
    const auto entry = j.begin();
    const std::string& key = entry.key();
    const Json& value = entry.value();
    if (key == "disk")
        subject.kind = FindingSubject::Kind::disk;
    else if (key == "volume")
        subject.kind = FindingSubject::Kind::volume;
    else
        throw DecodingError("unknown finding subject '" + key + "'");
    subject.payload = required<std::string>(value, "_0");
}

}  // namespace corvel
