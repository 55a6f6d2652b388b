// Random (version 4) UUIDs for records that need a stable identity, in upper-case canonical text.
#pragma once

#include <string>

namespace corvel::UUID {

std::string random();

}  // namespace corvel::UUID
