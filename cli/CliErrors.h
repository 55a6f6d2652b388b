// How a command tells main what went wrong: bad usage exits 2, failed work exits 1. Either way
// the person sees one line naming the input, never a stack trace.
#pragma once

#include <stdexcept>

namespace corvel::cli {

class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class CommandFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace corvel::cli
