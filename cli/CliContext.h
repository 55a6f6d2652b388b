// What every command needs from the command line: the parsed global options, the machine they
// name (opened once, live or recorded), the styling and where output goes. Everything the machine
// knows (runners, clock, home, data folder, settings) is asked of `machine()`.
#pragma once

#include "Terminal.h"
#include "common/Json.h"
#include "machine/Machine.h"

#include <iostream>
#include <optional>
#include <string>

namespace corvel::cli {

struct GlobalOptions {
    bool json = false;
    std::string replay;   // DIR of a recorded machine, empty for the live machine
    std::string now;      // ISO 8601 override of "now", empty for the clock
    std::string dataDir;  // empty: VELMORA_DATA_DIR, then the platform's support folder
};

class CliContext {
public:
    CliContext(std::ostream& out, std::ostream& err, bool outIsTerminal, bool errIsTerminal,
               Environment environment = currentEnvironment());

    GlobalOptions& options() { return options_; }
    bool json() const { return options_.json; }

    // Opens the machine the global options name; a bad option is a UsageError naming it.
    void validate();
    Machine& machine();

    std::ostream& out() { return out_; }
    std::ostream& err() { return err_; }
    const Style& style() const { return style_; }
    // Progress lines are for people watching a terminal, never for pipes or logs.
    bool showProgress() const { return errIsTerminal_; }
    // Where answers to questions come from (standard input in the program; a script in tests).
    void setInput(std::istream& in, bool isTerminal) {
        in_ = &in;
        inIsTerminal_ = isTerminal;
    }
    // Asks `question` (e.g. "Unmount Volume disk4s1 (Backup)? [y/N]") on stderr and reads the
    // answer: true only for "y" or "yes". With `assumeYes` (--yes) nothing is asked. Without a
    // person at a terminal it refuses with a UsageError that names `--yes`.
    bool confirm(const std::string& question, bool assumeYes);
    const Environment& environment() const { return environment_; }

    // One JSON document on stdout, nothing else.
    void printJson(const Json& document);

    // "Recorded machine: NAME (DATE)" and a blank line, when replaying; nothing live.
    void printSource();

private:
    std::ostream& out_;
    std::ostream& err_;
    Style style_;
    bool errIsTerminal_;
    std::istream* in_ = nullptr;
    bool inIsTerminal_ = false;
    Environment environment_;
    GlobalOptions options_;
    std::optional<Machine> machine_;
};

}  // namespace corvel::cli
