// Byte counts are signed 64-bit numbers. A sum that overflows is a programming error (no real
// disk holds 9.2 EB), so it stops the program loudly instead of wrapping into a nonsense figure.
// Analysis rules that could meet absurd input guard before calling these.
#pragma once

#include <cstdint>

namespace corvel {

[[noreturn]] void byteArithmeticOverflow();

inline std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    if (__builtin_add_overflow(a, b, &result)) byteArithmeticOverflow();
    return result;
}

inline std::int64_t checkedSubtract(std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    if (__builtin_sub_overflow(a, b, &result)) byteArithmeticOverflow();
    return result;
}

inline std::int64_t checkedMultiply(std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    if (__builtin_mul_overflow(a, b, &result)) byteArithmeticOverflow();
    return result;
}

}  // namespace corvel
