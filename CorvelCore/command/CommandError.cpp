#include "command/CommandError.h"

#include "common/Text.h"

namespace corvel {

CommandError::CommandError(Kind kind, std::string text, std::int32_t status)
    : kind_(kind), text_(std::move(text)), status_(status) {
    what_ = description();
}

CommandError CommandError::notAllowed(std::string verb) {
    return {Kind::notAllowed, std::move(verb), 0};
}
CommandError CommandError::launchFailed(std::string text) {
    return {Kind::launchFailed, std::move(text), 0};
}
CommandError CommandError::failed(std::int32_t status, std::string message) {
    return {Kind::failed, std::move(message), status};
}
CommandError CommandError::timedOut() {
    return {Kind::timedOut, {}, 0};
}

std::string CommandError::description() const {
    switch (kind_) {
        case Kind::notAllowed:
            return "Command '" + text_ + "' is not permitted (read-only policy)";
        case Kind::launchFailed:
            return "Could not launch command: " + text_;
        case Kind::failed:
            return "Command failed (" + std::to_string(status_) + "): " + text_;
        case Kind::timedOut:
            return "Command timed out";
    }
    return {};
}

std::string commandFailureMessage(const std::string& standardError, const std::string& standardOutput) {
    const std::string& chosen = standardError.empty() ? standardOutput : standardError;
    if (!isValidUTF8(chosen)) return {};
    return std::string(trim(chosen));
}

}  // namespace corvel
