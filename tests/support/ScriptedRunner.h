// The one scripted CommandRunning of the test suite: answers each argument list (optionally only
// for one executable) with fixed output or a fixed CommandError, remembers every call, and fails
// anything unscripted as a missing recording would. Safe to call from several threads.
//
//   ScriptedRunner runner;
//   runner.answer({"info", "-plist", "disk4"}, infoPlist);
//   runner.answer("/usr/sbin/lsof", {"-nP", "-w", "-F", "pcfn", "+f", "--", "/Volumes/X"}, CommandError::timedOut());
//   runner.onRun = [&](const ScriptedRunner::Call& call) { /* e.g. write the file a download would */ };
//   ... code under test ...
//   EXPECT_THAT(runner.calls, ElementsAre(ScriptedRunner::Call{"/usr/sbin/diskutil", {"unmount", "/Volumes/X"}}));
#pragma once

#include "command/CommandError.h"
#include "command/CommandRunning.h"

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

namespace corvel::testing {

class ScriptedRunner : public CommandRunning {
public:
    using Reply = std::variant<std::string, CommandError>;

    struct Call {
        std::string executable;
        std::vector<std::string> arguments;
        bool operator==(const Call&) const = default;
        friend std::ostream& operator<<(std::ostream& out, const Call& call) {
            out << call.executable;
            for (const auto& argument : call.arguments) out << " [" << argument << "]";
            return out;
        }
    };

    // Replies to this argument list, whatever the executable.
    void answer(std::vector<std::string> arguments, Reply reply) {
        const std::lock_guard lock(mutex_);
        replies_.insert_or_assign({std::nullopt, std::move(arguments)}, std::move(reply));
    }
    // Replies only when `executable` runs with this argument list.
    void answer(std::string executable, std::vector<std::string> arguments, Reply reply) {
        const std::lock_guard lock(mutex_);
        replies_.insert_or_assign({std::move(executable), std::move(arguments)}, std::move(reply));
    }

    std::string run(const std::string& executable, const std::vector<std::string>& arguments) override {
        std::optional<Reply> reply;
        {
            const std::lock_guard lock(mutex_);
            calls.push_back({executable, arguments});
            auto found = replies_.find({executable, arguments});
            if (found == replies_.end()) found = replies_.find({std::nullopt, arguments});
            if (found != replies_.end()) reply = found->second;
        }
        if (onRun) onRun(Call{executable, arguments});
        if (!reply) throw CommandError::launchFailed("no recording");
        if (const auto* error = std::get_if<CommandError>(&*reply)) throw *error;
        return std::get<std::string>(*reply);
    }

    // Some call began with `verb`.
    bool ran(const std::string& verb) const {
        const std::lock_guard lock(mutex_);
        for (const auto& call : calls)
            if (!call.arguments.empty() && call.arguments.front() == verb) return true;
        return false;
    }
    bool ranWith(const std::vector<std::string>& arguments) const {
        const std::lock_guard lock(mutex_);
        for (const auto& call : calls)
            if (call.arguments == arguments) return true;
        return false;
    }

    std::vector<Call> calls;
    std::function<void(const Call&)> onRun;

private:
    using Key = std::pair<std::optional<std::string>, std::vector<std::string>>;
    mutable std::mutex mutex_;
    std::map<Key, Reply> replies_;
};

}  // namespace corvel::testing
