#include "command/CommandError.h"

#include "common/Text.h"

namespace corvel {
namespace {

bool isValidUTF8(const std::string& text) {
    std::size_t i = 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    while (i < text.size()) {
        const unsigned char c = bytes[i];
        std::size_t extra = 0;
        if (c < 0x80) extra = 0;
        else if ((c & 0xE0) == 0xC0 && c >= 0xC2) extra = 1;
        else if ((c & 0xF0) == 0xE0) extra = 2;
        else if ((c & 0xF8) == 0xF0 && c <= 0xF4) extra = 3;
        else return false;
        if (extra > 0 && i + extra >= text.size()) return false;
        for (std::size_t k = 1; k <= extra; ++k)
            if ((bytes[i + k] & 0xC0) != 0x80) return false;
        i += extra + 1;
    }
    return true;
}

}  // namespace


CommandError::CommandError(Kind kind, std::string text, std::int32_t status)
    : kind_(kind), text_(std::move(text)), status_(status) {
    what_ = description();
}

CommandError CommandError::notAllowed(std::string verb) { return {Kind::notAllowed, std::move(verb), 0}; }
CommandError CommandError::launchFailed(std::string text) { return {Kind::launchFailed, std::move(text), 0}; }
CommandError CommandError::failed(std::int32_t status, std::string message) {
    return {Kind::failed, std::move(message), status};
}
CommandError CommandError::timedOut() { return {Kind::timedOut, {}, 0}; }

std::string CommandError::description() const {
    switch (kind_) {
    case Kind::notAllowed: return "Command '" + text_ + "' is not permitted (read-only policy)";
    case Kind::launchFailed: return "Could not launch command: " + text_;
    case Kind::failed: return "Command failed (" + std::to_string(status_) + "): " + text_;
    case Kind::timedOut: return "Command timed out";
    }
    return {};
}

std::string commandFailureMessage(const std::string& standardError, const std::string& standardOutput) {
    const std::string& chosen = standardError.empty() ? standardOutput : standardError;
    if (!isValidUTF8(chosen)) return {};
    return std::string(trim(chosen));
}

}  // namespace corvel
