// SHA-256 digests as lower-case hex, for checksums that people compare with other tools' output.
#pragma once

#include <string>
#include <string_view>

namespace corvel::SHA256 {

std::string hex(std::string_view bytes);

}  // namespace corvel::SHA256
