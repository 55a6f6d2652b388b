// What every harness shares: the fuzzer's bytes as text or as a byte span. Each harness calls the
// decoder the product calls on bytes from outside and catches only the errors that decoder
// documents, so that any other exception, a crash, a hang or undefined behaviour is a finding.
//
//   extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
//       try { corvel::LsblkParser::parse(corvel::fuzz::text(data, size)); }
//       catch (const corvel::DecodingError&) {}
//       return 0;
//   }
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace corvel::fuzz {

inline std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

inline std::span<const std::byte> bytes(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const std::byte*>(data), size};
}

}  // namespace corvel::fuzz
