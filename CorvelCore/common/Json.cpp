#include "common/Json.h"

namespace corvel {
namespace {

// Deeper than any document a tool or a person writes; deep enough nesting would otherwise take
// the stack with it in the recursive code that reads the parsed value.
constexpr int maximumDepth = 512;

}  // namespace

Json parseJsonText(std::string_view text, const std::string& what) {
    try {
        const Json::parser_callback_t limitDepth = [&what](int depth, Json::parse_event_t, Json&) {
            if (depth > maximumDepth)
                throw DecodingError(what + ": nested more than " + std::to_string(maximumDepth) + " levels deep");
            return true;
        };
        return Json::parse(text.begin(), text.end(), limitDepth);
    } catch (const nlohmann::json::parse_error& error) {
        // nlohmann's message starts with its own error id; keep only the human part.
        std::string message = error.what();
        if (const auto colon = message.find("parse error"); colon != std::string::npos) message = message.substr(colon);
        throw DecodingError(what + ": not valid JSON (" + message + ")");
    } catch (const nlohmann::json::exception& error) {
        // A number too large for any type, and the like: the document is not one we can use.
        std::string message = error.what();
        if (const auto bracket = message.find("] "); bracket != std::string::npos)
            message = message.substr(bracket + 2);
        throw DecodingError(what + ": not valid JSON (" + message + ")");
    }
}

}  // namespace corvel
