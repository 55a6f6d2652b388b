// Shared helpers for the storage tests: property-list builders (the scripted runner and the
// fixture readers are the test kit's own).
#pragma once

#include "storage/PropertyList.h"
#include "support/ScriptedRunner.h"
#include "support/TemporaryFolder.h"

#include <string>

namespace corvel::testing {

inline PropertyListValue dict() {
    return PropertyListValue::dictionary();
}
inline PropertyListValue str(std::string text) {
    return PropertyListValue::string(std::move(text));
}
inline PropertyListValue num(std::int64_t value) {
    return PropertyListValue::integer(value);
}
inline PropertyListValue flag(bool value) {
    return PropertyListValue::boolean(value);
}
inline std::string xml(const PropertyListValue& value) {
    return PropertyList::encode(value, PropertyList::Format::xml);
}

}  // namespace corvel::testing
