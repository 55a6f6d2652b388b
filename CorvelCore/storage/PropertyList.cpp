#include "storage/PropertyList.h"

#include <plist/plist.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

namespace corvel {

// ---------------------------------------------------------------------------
// PropertyListValue

PropertyListValue PropertyListValue::boolean(bool value) {
    PropertyListValue v;
    v.type_ = Type::boolean;
    v.boolean_ = value;
    return v;
}

PropertyListValue PropertyListValue::integer(std::int64_t value) {
    PropertyListValue v;
    v.type_ = Type::integer;
    v.integer_ = value;
    return v;
}

PropertyListValue PropertyListValue::real(double value) {
    PropertyListValue v;
    v.type_ = Type::real;
    v.real_ = value;
    return v;
}

PropertyListValue PropertyListValue::string(std::string value) {
    PropertyListValue v;
    v.type_ = Type::string;
    v.text_ = std::move(value);
    return v;
}

PropertyListValue PropertyListValue::date(TimePoint value) {
    PropertyListValue v;
    v.type_ = Type::date;
    v.date_ = value;
    return v;
}

PropertyListValue PropertyListValue::data(std::string bytes) {
    PropertyListValue v;
    v.type_ = Type::data;
    v.text_ = std::move(bytes);
    return v;
}

PropertyListValue PropertyListValue::array(Array items) {
    PropertyListValue v;
    v.type_ = Type::array;
    v.items_ = std::move(items);
    return v;
}

PropertyListValue PropertyListValue::dictionary(Dictionary entries) {
    PropertyListValue v;
    v.type_ = Type::dictionary;
    v.entries_ = std::move(entries);
    return v;
}

std::optional<bool> PropertyListValue::asBoolean() const {
    if (type_ != Type::boolean) return std::nullopt;
    return boolean_;
}

std::optional<std::int64_t> PropertyListValue::asInteger() const {
    if (type_ != Type::integer) return std::nullopt;
    return integer_;
}

std::optional<double> PropertyListValue::asReal() const {
    if (type_ != Type::real) return std::nullopt;
    return real_;
}

const std::string* PropertyListValue::asString() const {
    return type_ == Type::string ? &text_ : nullptr;
}

std::optional<TimePoint> PropertyListValue::asDate() const {
    if (type_ != Type::date) return std::nullopt;
    return date_;
}

const std::string* PropertyListValue::asData() const {
    return type_ == Type::data ? &text_ : nullptr;
}

const PropertyListValue::Array* PropertyListValue::asArray() const {
    return type_ == Type::array ? &items_ : nullptr;
}

const PropertyListValue::Dictionary* PropertyListValue::asDictionary() const {
    return type_ == Type::dictionary ? &entries_ : nullptr;
}

const PropertyListValue* PropertyListValue::find(std::string_view key) const {
    if (type_ != Type::dictionary) return nullptr;
    auto it = entries_.find(key);
    return it == entries_.end() ? nullptr : &it->second;
}

PropertyListValue& PropertyListValue::set(std::string key, PropertyListValue value) {
    type_ = Type::dictionary;
    entries_.insert_or_assign(std::move(key), std::move(value));
    return *this;
}

PropertyListValue& PropertyListValue::append(PropertyListValue value) {
    type_ = Type::array;
    items_.push_back(std::move(value));
    return *this;
}

// ---------------------------------------------------------------------------
// libplist bridge. Every difference between libplist releases lives below.

namespace {

#if defined(CORVEL_LIBPLIST_MODERN_API)
constexpr plist_type integerNodeType = PLIST_INT;
#else
constexpr plist_type integerNodeType = PLIST_UINT;
#endif

// Seconds between the Unix epoch and the property-list reference date (2001-01-01).
constexpr std::int64_t referenceDateOffset = 978307200;

struct PlistDeleter {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
using PlistHandle = std::unique_ptr<void, PlistDeleter>;

// Nesting beyond this is not something the disk tool prints; refusing it keeps a crafted
// document from exhausting the stack during conversion.
constexpr int maximumDepth = 256;

PropertyListValue fromNode(plist_t node, int depth);

std::int64_t readInteger(plist_t node) {
    // 2.2 stores every integer as uint64 (negative values as their two's complement bits);
    // 2.6 keeps the same storage and still offers this getter, so the bit pattern is the value.
    std::uint64_t raw = 0;
    plist_get_uint_val(node, &raw);
    return static_cast<std::int64_t>(raw);
}

TimePoint readDate(plist_t node) {
#if defined(CORVEL_LIBPLIST_MODERN_API)
    std::int64_t unixSeconds = 0;
    plist_get_unix_date_val(node, &unixSeconds);
    return TimePoint{} + std::chrono::seconds(unixSeconds);
#else
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return TimePoint{} + std::chrono::seconds(static_cast<std::int64_t>(seconds) + referenceDateOffset) +
           std::chrono::duration_cast<TimePoint::duration>(std::chrono::microseconds(microseconds));
#endif
}

plist_t newDate(TimePoint value) {
    auto unixSeconds = std::chrono::duration_cast<std::chrono::seconds>(value.time_since_epoch()).count();
#if defined(CORVEL_LIBPLIST_MODERN_API)
    return plist_new_unix_date(unixSeconds);
#else
    return plist_new_date(static_cast<std::int32_t>(unixSeconds - referenceDateOffset), 0);
#endif
}

std::uint64_t readBigEndian(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

}  // namespace

bool PropertyList::binaryStringHoldsNul(std::string_view bytes) {
    constexpr std::size_t trailerSize = 32;
    if (bytes.size() < 8 + trailerSize || bytes.substr(0, 6) != "bplist") return false;
    const std::size_t trailer = bytes.size() - trailerSize;
    const std::size_t offsetSize = static_cast<unsigned char>(bytes[trailer + 6]);
    const std::uint64_t objectCount = readBigEndian(bytes, trailer + 8, 8);
    const std::uint64_t tableStart = readBigEndian(bytes, trailer + 24, 8);
    // A malformed trailer is the library's to refuse; only well-formed tables are walked.
    if (offsetSize < 1 || offsetSize > 8 || tableStart >= trailer || objectCount > (trailer - tableStart) / offsetSize)
        return false;
    for (std::uint64_t i = 0; i < objectCount; ++i) {
        std::size_t at = readBigEndian(bytes, static_cast<std::size_t>(tableStart + i * offsetSize), offsetSize);
        if (at >= trailer) continue;
        const auto marker = static_cast<unsigned char>(bytes[at]);
        const unsigned kind = marker >> 4;
        if (kind != 0x5 && kind != 0x6) continue;  // ASCII and UTF-16 strings (keys are strings)
        std::uint64_t length = marker & 0x0F;
        ++at;
        if (length == 0x0F) {  // the length follows as an integer object
            if (at >= trailer) continue;
            const std::size_t width = std::size_t{1} << (static_cast<unsigned char>(bytes[at]) & 0x03);
            if (at + 1 + width > trailer) continue;
            length = readBigEndian(bytes, at + 1, width);
            at += 1 + width;
        }
        const std::uint64_t unit = kind == 0x6 ? 2 : 1;
        if (length > (trailer - at) / unit) continue;
        for (std::uint64_t k = 0; k < length; ++k) {
            const bool isNul =
                unit == 1 ? bytes[at + k] == '\0' : bytes[at + 2 * k] == '\0' && bytes[at + 2 * k + 1] == '\0';
            if (isNul) return true;
        }
    }
    return false;
}

namespace {

plist_t parseMemory(std::string_view bytes) {
    plist_t root = nullptr;
#if defined(CORVEL_LIBPLIST_MODERN_API)
    plist_format_t format{};
    plist_err_t status = plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root, &format);
    if (status != PLIST_ERR_SUCCESS) {
        if (root) plist_free(root);
        return nullptr;
    }
#else
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
#endif
    return root;
}

PropertyListValue fromNode(plist_t node, int depth) {
    if (depth > maximumDepth) throw PropertyListError("property list nested too deeply");
    plist_type type = plist_get_node_type(node);
    if (type == integerNodeType) return PropertyListValue::integer(readInteger(node));
    switch (type) {
        case PLIST_BOOLEAN: {
            std::uint8_t value = 0;
            plist_get_bool_val(node, &value);
            return PropertyListValue::boolean(value != 0);
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            return PropertyListValue::real(value);
        }
        case PLIST_STRING: {
            std::uint64_t length = 0;
            const char* text = plist_get_string_ptr(node, &length);
            return PropertyListValue::string(text ? std::string(text, length) : std::string());
        }
        case PLIST_DATE:
            return PropertyListValue::date(readDate(node));
        case PLIST_DATA: {
            std::uint64_t length = 0;
            const char* bytes = plist_get_data_ptr(node, &length);
            return PropertyListValue::data(bytes ? std::string(bytes, length) : std::string());
        }
        case PLIST_ARRAY: {
            PropertyListValue::Array items;
            std::uint32_t count = plist_array_get_size(node);
            items.reserve(count);
            for (std::uint32_t i = 0; i < count; ++i) {
                items.push_back(fromNode(plist_array_get_item(node, i), depth + 1));
            }
            return PropertyListValue::array(std::move(items));
        }
        case PLIST_DICT: {
            PropertyListValue::Dictionary entries;
            plist_dict_iter iterator = nullptr;
            plist_dict_new_iter(node, &iterator);
            while (iterator) {
                char* key = nullptr;
                plist_t value = nullptr;
                plist_dict_next_item(node, iterator, &key, &value);
                if (!key) break;
                std::string keyText(key);
                free(key);
                if (value) entries.insert_or_assign(std::move(keyText), fromNode(value, depth + 1));
            }
            free(iterator);
            return PropertyListValue::dictionary(std::move(entries));
        }
        default:
            // Keys, UIDs and (on newer releases) null nodes never carry disk facts; they read
            // as empty text so that a typed lookup treats them as the wrong type.
            return PropertyListValue::string({});
    }
}

plist_t toNode(const PropertyListValue& value) {
    switch (value.type()) {
        case PropertyListValue::Type::boolean:
            return plist_new_bool(*value.asBoolean() ? 1 : 0);
        case PropertyListValue::Type::integer:
            return plist_new_uint(static_cast<std::uint64_t>(*value.asInteger()));
        case PropertyListValue::Type::real:
            return plist_new_real(*value.asReal());
        case PropertyListValue::Type::string:
            return plist_new_string(value.asString()->c_str());
        case PropertyListValue::Type::date:
            return newDate(*value.asDate());
        case PropertyListValue::Type::data:
            return plist_new_data(value.asData()->data(), value.asData()->size());
        case PropertyListValue::Type::array: {
            plist_t node = plist_new_array();
            for (const auto& item : *value.asArray()) plist_array_append_item(node, toNode(item));
            return node;
        }
        case PropertyListValue::Type::dictionary: {
            plist_t node = plist_new_dict();
            for (const auto& [key, item] : *value.asDictionary()) plist_dict_set_item(node, key.c_str(), toNode(item));
            return node;
        }
    }
    return plist_new_dict();
}

}  // namespace

namespace PropertyList {

PropertyListValue parse(std::string_view bytes) {
    if (bytes.empty()) throw PropertyListError("not a property list: no data");
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw PropertyListError("not a property list: too large");
    }
    // The library aborts the whole process on a dictionary key holding a NUL character (an
    // assertion in plist_get_key_val), so such input never reaches it.
    if (PropertyList::binaryStringHoldsNul(bytes))
        throw PropertyListError("not a property list: a text holds a NUL character");
    PlistHandle root(parseMemory(bytes));
    if (!root) throw PropertyListError("not a property list: the data is not in XML or binary property-list format");
    return fromNode(static_cast<plist_t>(root.get()), 0);
}

std::string encode(const PropertyListValue& value, Format format) {
    PlistHandle root(toNode(value));
    char* buffer = nullptr;
    std::uint32_t length = 0;
    std::string result;
    if (format == Format::xml) {
        plist_to_xml(static_cast<plist_t>(root.get()), &buffer, &length);
        if (buffer) result.assign(buffer, length);
        plist_to_xml_free(buffer);
    } else {
        plist_to_bin(static_cast<plist_t>(root.get()), &buffer, &length);
        if (buffer) result.assign(buffer, length);
        plist_to_bin_free(buffer);
    }
    return result;
}

}  // namespace PropertyList
}  // namespace corvel
