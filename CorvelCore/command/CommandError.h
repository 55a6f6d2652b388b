// The four ways running an external tool can fail, each with the text people see.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace corvel {

class CommandError : public std::exception {
public:
    enum class Kind { notAllowed, launchFailed, failed, timedOut };

    // The verb that the read-only policy refused (the empty string when there was none).
    static CommandError notAllowed(std::string verb);
    // The platform's description of why the program could not start.
    static CommandError launchFailed(std::string text);
    // A non-zero exit: its status and the trimmed standard error (or output when error was empty).
    static CommandError failed(std::int32_t status, std::string message);
    static CommandError timedOut();

    Kind kind() const { return kind_; }
    // The text payload: the verb, the launch error or the failure message.
    const std::string& text() const { return text_; }
    std::int32_t status() const { return status_; }

    std::string description() const;
    const char* what() const noexcept override { return what_.c_str(); }

    bool operator==(const CommandError& other) const {
        return kind_ == other.kind_ && text_ == other.text_ && status_ == other.status_;
    }

private:
    CommandError(Kind kind, std::string text, std::int32_t status);

    Kind kind_;
    std::string text_;
    std::int32_t status_ = 0;
    std::string what_;
};

// The failure message of a non-zero exit: standard error when it has any bytes, else standard
// output; decoded as UTF-8 (invalid bytes give "") and trimmed.
std::string commandFailureMessage(const std::string& standardError, const std::string& standardOutput);

}  // namespace corvel
