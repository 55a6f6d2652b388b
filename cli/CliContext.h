// What every command needs from the command line and the environment: the global options, the
// live or recorded machine, the data folder, and where output goes. Commands ask the context
// instead of the environment, so that tests drive them with a recording and a temporary folder.
#pragma once

#include "Terminal.h"
#include "command/CommandRunning.h"
#include "command/RecordedCommandRunner.h"
#include "common/ISO8601.h"
#include "common/Json.h"
#include "storage/RecordedMachine.h"

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
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
    CliContext(std::ostream& out, std::ostream& err, bool outIsTerminal, bool errIsTerminal);

    GlobalOptions& options() { return options_; }
    bool json() const { return options_.json; }

    // Checks the global options once parsing is done (throws UsageError naming the bad value).
    void validate();

    bool isReplay() const { return !options_.replay.empty(); }
    // The recorded machine in replay, null on the live machine. Loaded once.
    const RecordedMachine* recording();
    // The recorded runner in replay, else a live runner with this time-out (one per time-out).
    CommandRunning& runner(double timeoutSeconds);
    // In replay, whether the recording runs `executable`; live, whether the file is executable.
    bool toolInstalled(const std::string& executable);

    // --now, else the recording's capture time, else the clock.
    TimePoint now();
    std::filesystem::path dataDir();
    // The recording's home in replay, else $HOME (or the password database).
    std::string home();

    std::ostream& out() { return out_; }
    std::ostream& err() { return err_; }
    const Style& style() const { return style_; }
    // Progress lines are for people watching a terminal, never for pipes or logs.
    bool showProgress() const { return errIsTerminal_; }

    // One JSON document on stdout, nothing else.
    void printJson(const Json& document);

private:
    std::ostream& out_;
    std::ostream& err_;
    Style style_;
    bool errIsTerminal_;
    GlobalOptions options_;
    std::optional<RecordedMachine> recording_;
    std::unique_ptr<RecordedCommandRunner> recordedRunner_;
    std::map<double, std::unique_ptr<CommandRunning>> liveRunners_;
};

}  // namespace corvel::cli
