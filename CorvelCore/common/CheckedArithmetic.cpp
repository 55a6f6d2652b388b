#include "common/CheckedArithmetic.h"

#include <cstdio>
#include <cstdlib>

namespace corvel {

void byteArithmeticOverflow() {
    std::fputs("fatal: 64-bit byte arithmetic overflow\n", stderr);
    std::abort();
}

}  // namespace corvel
