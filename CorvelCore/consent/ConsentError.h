// The one way recording a consent decision can be refused: an acceptance or an update without
// the required scope. Nothing is appended when it is thrown.
//
//   try { ledger.record(ConsentRecord::Action::accepted, {}, "0.1.0", now); }
//   catch (const ConsentError& error) { show(error.description()); }
#pragma once

#include <stdexcept>
#include <string>

namespace corvel {

class ConsentError : public std::exception {
public:
    enum class Kind { requiredScopeMissing };

    static ConsentError requiredScopeMissing();

    Kind kind() const { return kind_; }
    std::string description() const;
    const char* what() const noexcept override { return what_.c_str(); }

private:
    explicit ConsentError(Kind kind);

    Kind kind_;
    std::string what_;
};

}  // namespace corvel
