// Every enumeration's raw value (its JSON text) and display label live in one table next to the
// enum, so no switch statement elsewhere repeats them.
//
//   enum class SMARTStatus { verified, failing };
//   template <> struct EnumTable<SMARTStatus> {
//       static constexpr std::array<EnumEntry<SMARTStatus>, 2> entries{{
//           {SMARTStatus::verified, "verified", "Verified"},
//           {SMARTStatus::failing, "failing", "Failing"},
//       }};
//   };
//   CORVEL_ENUM_JSON(SMARTStatus)
//
//   label(SMARTStatus::failing) == "Failing"; enumFromRaw<SMARTStatus>("verified")
#pragma once

#include "common/Json.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace corvel {

// How a value reads at a glance, for enumerations that carry a judgement (severity, health, risk,
// SMART). Front ends map a tone to their colours in one place.
enum class Tone { plain, good, notice, caution, bad, muted };

template <class E>
struct EnumEntry {
    E value;
    std::string_view raw;
    std::string_view label;
    Tone tone = Tone::plain;
};

template <class E>
struct EnumTable;  // specialised next to each enum

template <class E>
constexpr const auto& allEntries() {
    return EnumTable<E>::entries;
}

template <class E>
constexpr std::string_view rawValue(E value) {
    for (const auto& entry : EnumTable<E>::entries)
        if (entry.value == value) return entry.raw;
    return {};
}

template <class E>
constexpr std::string_view label(E value) {
    for (const auto& entry : EnumTable<E>::entries)
        if (entry.value == value) return entry.label;
    return {};
}

template <class E>
constexpr Tone toneOf(E value) {
    for (const auto& entry : EnumTable<E>::entries)
        if (entry.value == value) return entry.tone;
    return Tone::plain;
}

template <class E>
constexpr std::optional<E> enumFromRaw(std::string_view raw) {
    for (const auto& entry : EnumTable<E>::entries)
        if (entry.raw == raw) return entry.value;
    return std::nullopt;
}

template <class E>
auto allCases() {
    std::array<E, EnumTable<E>::entries.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i) cases[i] = EnumTable<E>::entries[i].value;
    return cases;
}

template <class E>
void enumToJson(Json& j, E value) {
    j = std::string(rawValue(value));
}

template <class E>
void enumFromJson(const Json& j, E& value, const char* typeName) {
    if (!j.is_string()) throw DecodingError(std::string(typeName) + " must be a text");
    const auto& text = j.get_ref<const std::string&>();
    const auto decoded = enumFromRaw<E>(text);
    if (!decoded) throw DecodingError("unknown " + std::string(typeName) + " '" + text + "'");
    value = *decoded;
}

}  // namespace corvel

// Declares to_json/from_json by raw text for an enum with an EnumTable; use at the enum's namespace.
#define CORVEL_ENUM_JSON(E)                                    \
    inline void to_json(::corvel::Json& j, E value) {          \
        ::corvel::enumToJson(j, value);                        \
    }                                                          \
    inline void from_json(const ::corvel::Json& j, E& value) { \
        ::corvel::enumFromJson(j, value, #E);                  \
    }
