#include "common/Json.h"

namespace corvel {

Json parseJsonText(std::string_view text, const std::string& what) {
    try {
        return Json::parse(text.begin(), text.end());
    } catch (const nlohmann::json::parse_error& error) {
        // nlohmann's message starts with its own error id; keep only the human part.
        std::string message = error.what();
        if (const auto colon = message.find("parse error"); colon != std::string::npos) message = message.substr(colon);
        throw DecodingError(what + ": not valid JSON (" + message + ")");
    }
}

}  // namespace corvel
