// Which applications are running for the person using the machine, so that a cleanup never
// offers the data of an application that is still using it. On macOS these are the names of
// running app bundles ("Slack" for /Applications/Slack.app/Contents/MacOS/Slack); on Linux the
// distinct command names of the user's processes ("slack", "code"). Tests pass a fixed set.
//
//   auto running = systemRunningApplications();
//   std::set<std::string> names = running->names();
//   FixedRunningApplications fixed({"Slack"});
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace corvel {

class RunningApplications {
public:
    virtual ~RunningApplications() = default;
    // Never throws: a process that ends or hides while being looked at is left out.
    virtual std::set<std::string> names() = 0;
};

class FixedRunningApplications final : public RunningApplications {
public:
    explicit FixedRunningApplications(std::set<std::string> names) : names_(std::move(names)) {}
    std::set<std::string> names() override { return names_; }

private:
    std::set<std::string> names_;
};

// The running applications of this machine (one implementation per platform).
std::unique_ptr<RunningApplications> systemRunningApplications();

namespace RunningApplicationNames {

// The application an executable belongs to: the outermost ".app" folder of its path without that
// suffix, so that helpers inside an application count as the application. Absent outside a bundle.
std::optional<std::string> bundleName(std::string_view executablePath);

// A process's command name as the kernel keeps it (one line, at most 15 bytes); absent when empty.
std::optional<std::string> commandName(std::string_view commText);

// Whether a name in the process table folder is a process id.
bool isProcessEntry(std::string_view name);

}  // namespace RunningApplicationNames
}  // namespace corvel
