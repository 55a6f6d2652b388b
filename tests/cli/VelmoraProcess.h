// Runs velmora for the command-line tests and keeps what it said: the real binary as a child
// process, or the command parser in-process for tests that look at one command family. Also a
// temporary folder per test and small readers of recorded machines and output lines.
#pragma once

#include "Commands.h"
#include "common/Json.h"
#include "consent/ConsentScope.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace corvel::clitest {

struct Outcome {
    int status = -1;  // the exit status; -1 when velmora was killed by a signal or could not start
    std::string out;
    std::string err;
};

enum class Streams {
    separate,  // stdout into `out`, stderr into `err`
    merged,    // both into `out`, in the order written, as a terminal would show them
};

// Runs the velmora binary with `arguments`, each handed over as one word without a shell, so
// paths with spaces or quotes need no quoting. `environment` holds NAME=value entries that
// replace or add to the inherited environment (e.g. "NO_COLOR=1", "HOME=/nowhere").
Outcome velmora(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {},
                Streams streams = Streams::separate);

// Runs one command line in this process with only `families` registered; never a terminal.
Outcome velmoraInProcess(const std::vector<std::string>& arguments, const cli::CommandFamilies& families);

// The folder of the recorded machine `name` among the fixtures.
std::string machine(const std::string& name);

// The line of `text` that contains `needle`, or "" when none does.
std::string lineWith(const std::string& text, const std::string& needle);

// The lines of `text`, for a golden comparison of what a person reads; `machineFolder` (a
// recorded machine's folder, which differs per checkout) is shown as <machine>.
Json outputLines(std::string text, const std::string& machineFolder = "");

// Records the person's acceptance of the current terms with `scopes` allowed in `dataFolder`'s
// ledger (default: the data folder every test of this process uses), as `velmora consent accept`
// would; the state-changing commands refuse without it.
void grantConsent(const std::vector<ConsentScope>& scopes, const std::string& dataFolder = "");

using testing::TemporaryFolder;

// A test's own folder with "data" and "home" inside: `run` starts velmora with its data folder
// there, HOME there and no colour (`environment` entries win); `json` adds --json, expects exit 0
// and parses what was printed.
//
//   Sandbox box;
//   box.write("home/.cache/a.bin", "x");
//   EXPECT_TRUE(failsWith(box.run({"scan", box.path("nowhere")}), 2, "nowhere"));
class Sandbox {
public:
    Sandbox();
    // `relative` inside the folder, symbolic links resolved as velmora prints paths.
    std::string path(const std::string& relative = "") const;
    std::string write(const std::string& relative, const std::string& contents) const {
        return folder.write(relative, contents);
    }
    Outcome run(std::vector<std::string> arguments, const std::vector<std::string>& environment = {}) const;
    Json json(std::vector<std::string> arguments) const;

    TemporaryFolder folder;
};

// Runs `command` with /bin/sh: the exit status, and what it wrote to stdout and stderr together in `out`.
Outcome shell(const std::string& command);

// Whether velmora ended with `status` and said exactly one line on stderr that holds `needle`.
::testing::AssertionResult failsWith(const Outcome& outcome, int status, const std::string& needle);

}  // namespace corvel::clitest
