// JSON conventions shared by every record: keys equal field names, an absent optional is an
// absent key, dates are ISO 8601 text, and a document we cannot decode raises DecodingError
// naming the key, never a bare library exception.
//
//   void to_json(Json& j, const Partition& p) {
//       j = Json{{"id", p.id}, {"content", p.content}, {"sizeBytes", p.sizeBytes}};
//       putOptional(j, "volumeName", p.volumeName);
//   }
//   void from_json(const Json& j, Partition& p) {
//       p.id = required<std::string>(j, "id");
//       p.volumeName = optionalValue<std::string>(j, "volumeName");
//   }
#pragma once

#include "common/ISO8601.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace corvel {

using Json = nlohmann::ordered_json;

// A JSON document, or one of its values, that does not have the shape we need.
class DecodingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Parses text as JSON; `what` names the input in the error ("settings.json", "lsblk output").
Json parseJsonText(std::string_view text, const std::string& what);

template <class T>
T decodeValue(const Json& value, const char* key) {
    try {
        return value.get<T>();
    } catch (const DecodingError& error) {
        throw DecodingError(std::string("key '") + key + "': " + error.what());
    } catch (const nlohmann::json::exception& error) {
        throw DecodingError(std::string("key '") + key + "' has the wrong type (" + value.type_name() + ")");
    }
}

template <class T>
T required(const Json& object, const char* key) {
    if (!object.is_object()) throw DecodingError(std::string("expected an object holding '") + key + "'");
    const auto found = object.find(key);
    if (found == object.end()) throw DecodingError(std::string("missing key '") + key + "'");
    return decodeValue<T>(*found, key);
}

template <class T>
std::optional<T> optionalValue(const Json& object, const char* key) {
    if (!object.is_object()) return std::nullopt;
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return std::nullopt;
    return decodeValue<T>(*found, key);
}

template <class T>
T valueOr(const Json& object, const char* key, T fallback) {
    auto value = optionalValue<T>(object, key);
    return value ? std::move(*value) : std::move(fallback);
}

template <class T>
void putOptional(Json& object, const char* key, const std::optional<T>& value) {
    if (value) object[key] = *value;
}

}  // namespace corvel

namespace nlohmann {

template <>
struct adl_serializer<corvel::TimePoint> {
    static void to_json(ordered_json& j, const corvel::TimePoint& time) { j = corvel::ISO8601::format(time); }
    static void to_json(json& j, const corvel::TimePoint& time) { j = corvel::ISO8601::format(time); }
    template <class BasicJson>
    static void from_json(const BasicJson& j, corvel::TimePoint& time) {
        if (!j.is_string()) throw corvel::DecodingError("expected an ISO 8601 date text");
        const auto parsed = corvel::ISO8601::parse(j.template get_ref<const std::string&>());
        if (!parsed) throw corvel::DecodingError("not an ISO 8601 date: " + j.template get<std::string>());
        time = *parsed;
    }
};

}  // namespace nlohmann
