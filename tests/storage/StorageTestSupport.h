// Shared helpers for the storage tests: a scripted command runner that remembers what it was
// asked, property-list builders, and the path of a recorded machine.
#pragma once

#include "command/CommandError.h"
#include "command/CommandRunning.h"
#include "storage/PropertyList.h"

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace corvel::testing {

// Answers each (executable, arguments) with fixed output or a fixed error; anything else fails
// to launch, as a missing tool would.
class ScriptedRunner : public CommandRunning {
public:
    using Key = std::pair<std::string, std::vector<std::string>>;

    void answer(std::string executable, std::vector<std::string> arguments, std::string output) {
        answers_[{std::move(executable), std::move(arguments)}] = std::move(output);
    }
    void fail(std::string executable, std::vector<std::string> arguments, CommandError error) {
        answers_[{std::move(executable), std::move(arguments)}] = std::move(error);
    }

    std::string run(const std::string& executable, const std::vector<std::string>& arguments) override {
        calls.emplace_back(executable, arguments);
        auto it = answers_.find({executable, arguments});
        if (it == answers_.end()) throw CommandError::launchFailed("No such file or directory");
        if (auto* error = std::get_if<CommandError>(&it->second)) throw *error;
        return std::get<std::string>(it->second);
    }

    bool wasCalledWith(const std::vector<std::string>& arguments) const {
        for (const auto& call : calls) {
            if (call.second == arguments) return true;
        }
        return false;
    }

    std::vector<Key> calls;

private:
    std::map<Key, std::variant<std::string, CommandError>> answers_;
};

inline PropertyListValue dict() { return PropertyListValue::dictionary(); }
inline PropertyListValue str(std::string text) { return PropertyListValue::string(std::move(text)); }
inline PropertyListValue num(std::int64_t value) { return PropertyListValue::integer(value); }
inline PropertyListValue flag(bool value) { return PropertyListValue::boolean(value); }
inline std::string xml(const PropertyListValue& value) { return PropertyList::encode(value, PropertyList::Format::xml); }

inline std::filesystem::path machineDirectory(const std::string& name) {
    return std::filesystem::path(CORVEL_FIXTURES_DIR) / "machines" / name;
}

}  // namespace corvel::testing
