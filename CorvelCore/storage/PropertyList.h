// Property lists (XML and binary) as plain C++ values.
//
// The disk tool speaks property lists; everything above this file reads them as a
// `PropertyListValue` tree and never touches libplist, whose API differs between the
// Debian (2.2) and Homebrew (2.6) releases. That difference is handled in PropertyList.cpp only.
//
//   PropertyListValue root = PropertyList::parse(bytes);          // XML or binary, detected
//   if (const auto* disks = root.find("AllDisksAndPartitions")) { ... }
//   std::string xml = PropertyList::encode(root, PropertyList::Format::xml);
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/ISO8601.h"

namespace corvel {

// The reader's own complaint about bytes that are not a property list.
struct PropertyListError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One node of a property list. Integers are kept signed (the disk tool never prints values
// above 2^63); a dictionary keeps its keys sorted, which is how property lists compare anyway.
class PropertyListValue {
public:
    enum class Type { boolean, integer, real, string, date, data, array, dictionary };
    using Array = std::vector<PropertyListValue>;
    using Dictionary = std::map<std::string, PropertyListValue, std::less<>>;

    PropertyListValue() : type_(Type::dictionary) {}
    static PropertyListValue boolean(bool value);
    static PropertyListValue integer(std::int64_t value);
    static PropertyListValue real(double value);
    static PropertyListValue string(std::string value);
    static PropertyListValue date(TimePoint value);
    static PropertyListValue data(std::string bytes);
    static PropertyListValue array(Array items = {});
    static PropertyListValue dictionary(Dictionary entries = {});

    Type type() const { return type_; }
    bool isDictionary() const { return type_ == Type::dictionary; }
    bool isArray() const { return type_ == Type::array; }

    // Typed reads: absent when the node has another type.
    std::optional<bool> asBoolean() const;
    std::optional<std::int64_t> asInteger() const;
    std::optional<double> asReal() const;
    const std::string* asString() const;
    std::optional<TimePoint> asDate() const;
    const std::string* asData() const;
    const Array* asArray() const;
    const Dictionary* asDictionary() const;

    // Dictionary member lookup; null when this is not a dictionary or the key is missing.
    const PropertyListValue* find(std::string_view key) const;

    // Builders used by tests and encoders.
    PropertyListValue& set(std::string key, PropertyListValue value);
    PropertyListValue& append(PropertyListValue value);

    bool operator==(const PropertyListValue&) const = default;

private:
    Type type_;
    bool boolean_ = false;
    std::int64_t integer_ = 0;
    double real_ = 0;
    std::string text_;  // string text or data bytes
    TimePoint date_{};
    Array items_;
    Dictionary entries_;
};

namespace PropertyList {

enum class Format { xml, binary };

// Reads XML or binary property-list bytes; throws PropertyListError for anything else
// (including empty, truncated or oversized input).
PropertyListValue parse(std::string_view bytes);

// Whether a binary property list holds a text (a key or a value) with a NUL character in it;
// false for anything that is not a well-formed binary property list.
bool binaryStringHoldsNul(std::string_view bytes);

// Writes a value in the chosen format.
std::string encode(const PropertyListValue& value, Format format);

}  // namespace PropertyList
}  // namespace corvel
