// JSON conventions shared by every record: keys equal field names, an absent optional is an
// absent key, dates are ISO 8601 text, and a document we cannot decode raises DecodingError
// naming the key, never a bare library exception.
//
// A record lists its fields once, in their documented order, and gets both directions:
//
//   struct Partition { std::string id; std::int64_t sizeBytes = 0; std::optional<std::string> volumeName; };
//   CORVEL_JSON_RECORD(Partition, id, sizeBytes, volumeName)      // non-optional fields are required
//   CORVEL_JSON_LENIENT(Settings, monitoringEnabled, thresholds)  // every key optional, absent = default
//
// Records with derived keys or a shape of their own write to_json/from_json by hand with the
// helpers below (required, optionalValue, putOptional).
#pragma once

#include "common/ISO8601.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

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
    // The library converts a floating-point number to an integer with a plain cast, which is
    // undefined beyond the integer's range (6e39 in a byte count): refuse those, keep the rest.
    if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
        if (value.is_number_float()) {
            const double number = value.get<double>();
            const double limit = std::ldexp(1.0, std::numeric_limits<T>::digits);
            if (!(number >= (std::is_signed_v<T> ? -limit : 0.0) && number < limit))
                throw DecodingError(std::string("key '") + key + "' is out of range");
            return static_cast<T>(number);
        }
    }
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

// The per-field steps behind CORVEL_JSON_RECORD and CORVEL_JSON_LENIENT.
namespace jsonfield {

template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {};

template <class T>
void put(Json& object, const char* key, const T& value) {
    if constexpr (IsOptional<T>::value) {
        if (value) object[key] = *value;
    } else {
        object[key] = value;
    }
}

template <class T>
void get(const Json& object, const char* key, T& value) {
    if constexpr (IsOptional<T>::value)
        value = optionalValue<typename T::value_type>(object, key);
    else
        value = required<T>(object, key);
}

// Absent or null keeps what the record was constructed with.
template <class T>
void getLenient(const Json& object, const char* key, T& value) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return;
    if constexpr (IsOptional<T>::value)
        value = decodeValue<typename T::value_type>(*found, key);
    else
        value = decodeValue<T>(*found, key);
}

inline void expectObject(const Json& j, const char* type) {
    if (!j.is_object()) throw DecodingError(std::string(type) + " must be a JSON object, not " + j.type_name());
}

}  // namespace jsonfield
}  // namespace corvel

#define CORVEL_JSON_PUT_FIELD(field) ::corvel::jsonfield::put(j, #field, value.field);
#define CORVEL_JSON_GET_FIELD(field) ::corvel::jsonfield::get(j, #field, value.field);
#define CORVEL_JSON_GET_LENIENT_FIELD(field) ::corvel::jsonfield::getLenient(j, #field, value.field);

// to_json/from_json for a plain record, keys equal to the field names, in the order given.
// Use at the record's namespace, after its definition.
#define CORVEL_JSON_RECORD(Type, ...)                                                 \
    inline void to_json(::corvel::Json& j, const Type& value) {                       \
        j = ::corvel::Json::object();                                                 \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(CORVEL_JSON_PUT_FIELD, __VA_ARGS__)) \
    }                                                                                 \
    inline void from_json(const ::corvel::Json& j, Type& value) {                     \
        ::corvel::jsonfield::expectObject(j, #Type);                                  \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(CORVEL_JSON_GET_FIELD, __VA_ARGS__)) \
    }

// As CORVEL_JSON_RECORD, but every key may be missing and then keeps its default: for files a
// person edits and for records that grew fields after they were first saved.
#define CORVEL_JSON_LENIENT(Type, ...)                                                        \
    inline void to_json(::corvel::Json& j, const Type& value) {                               \
        j = ::corvel::Json::object();                                                         \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(CORVEL_JSON_PUT_FIELD, __VA_ARGS__))         \
    }                                                                                         \
    inline void from_json(const ::corvel::Json& j, Type& value) {                             \
        ::corvel::jsonfield::expectObject(j, #Type);                                          \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(CORVEL_JSON_GET_LENIENT_FIELD, __VA_ARGS__)) \
    }

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
