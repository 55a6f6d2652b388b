#include "cli/VelmoraProcess.h"

#include "common/AtomicFile.h"
#include "consent/ConsentChoices.h"
#include "consent/ConsentLedger.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace corvel::clitest {
namespace {

// The inherited environment with `overrides` (NAME=value) replacing entries of the same name.
std::vector<std::string> environmentWith(const std::vector<std::string>& overrides) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text(*entry);
        const std::string name = text.substr(0, text.find('='));
        bool replaced = false;
        for (const auto& override : overrides) replaced = replaced || override.substr(0, override.find('=')) == name;
        if (!replaced) result.push_back(text);
    }
    result.insert(result.end(), overrides.begin(), overrides.end());
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (auto& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

Outcome velmora(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                Streams streams) {
    // The streams go to files rather than pipes: nothing to drain while the child runs.
    TemporaryFolder folder;
    const std::string out = folder.path("out");
    const std::string err = folder.path("err");
    std::vector<std::string> words{CORVEL_VELMORA_BINARY};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environmentWith(environment);
    const std::vector<char*> argv = pointersTo(words);
    const std::vector<char*> envp = pointersTo(variables);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (streams == Streams::merged)
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = -1;
    const int failed = ::posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    Outcome outcome;
    if (failed != 0) {
        outcome.err = std::string("cannot start velmora: ") + std::strerror(failed);
        return outcome;
    }
    int raw = 0;
    while (::waitpid(child, &raw, 0) < 0)
        if (errno != EINTR) return outcome;
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    outcome.out = AtomicFile::read(out).value_or("");
    outcome.err = AtomicFile::read(err).value_or("");
    return outcome;
}

Outcome velmoraInProcess(const std::vector<std::string>& arguments, const cli::CommandFamilies& families) {
    std::ostringstream out;
    std::ostringstream err;
    cli::CliContext context(out, err, false, false);
    std::vector<const char*> argv{"velmora"};
    for (const auto& word : arguments) argv.push_back(word.c_str());
    Outcome outcome;
    outcome.status = cli::runCommandLine(static_cast<int>(argv.size()), argv.data(), context, families);
    outcome.out = out.str();
    outcome.err = err.str();
    return outcome;
}

std::string machine(const std::string& name) {
    return testing::machineFolder(name);
}

std::string lineWith(const std::string& text, const std::string& needle) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.find(needle) != std::string::npos) return line;
    }
    return "";
}

Json outputLines(std::string text, const std::string& machineFolder) {
    if (!machineFolder.empty())
        for (auto at = text.find(machineFolder); at != std::string::npos; at = text.find(machineFolder, at))
            text.replace(at, machineFolder.size(), "<machine>");
    Json result = Json::array();
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) result.push_back(line);
    return result;
}

void grantConsent(const std::vector<ConsentScope>& scopes, const std::string& dataFolder) {
    const char* shared = std::getenv("VELMORA_DATA_DIR");
    const std::filesystem::path folder = !dataFolder.empty() ? dataFolder : shared ? shared : "";
    if (folder.empty()) throw std::runtime_error("grantConsent: no data folder");
    const auto path = ConsentLedger::defaultURL(folder);
    auto ledger = ConsentLedger::load(path);
    ledger.record(ConsentRecord::Action::accepted, ConsentChoices::forAcceptance(scopes), VELMORA_VERSION,
                  currentTime());
    ledger.save(path);
}

Sandbox::Sandbox() {
    folder.makeFolder("data");
    folder.makeFolder("home");
}

std::string Sandbox::path(const std::string& relative) const {
    return std::filesystem::weakly_canonical(folder.path(relative)).string();
}

Outcome Sandbox::run(std::vector<std::string> arguments, const std::vector<std::string>& environment) const {
    arguments.insert(arguments.begin(), {"--data-dir", path("data")});
    std::vector<std::string> variables = environment;
    for (const std::string& fallback : {"HOME=" + path("home"), std::string("NO_COLOR=1")}) {
        const auto name = fallback.substr(0, fallback.find('=') + 1);
        bool given = false;
        for (const auto& each : environment) given = given || each.rfind(name, 0) == 0;
        if (!given) variables.push_back(fallback);
    }
    return velmora(arguments, variables);
}

Json Sandbox::json(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "--json");
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return Json::parse(outcome.out);
}

Outcome shell(const std::string& command) {
    TemporaryFolder folder;
    const std::string output = folder.path("output");
    Outcome outcome;
    const int raw = std::system(("{ " + command + "\n} >'" + output + "' 2>&1").c_str());
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    outcome.out = AtomicFile::read(output).value_or("");
    return outcome;
}

::testing::AssertionResult failsWith(const Outcome& outcome, int status, const std::string& needle) {
    const auto lines = std::count(outcome.err.begin(), outcome.err.end(), '\n');
    if (outcome.status == status && lines == 1 && outcome.err.find(needle) != std::string::npos)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "expected exit " << status << " and one line with '" << needle
                                         << "', got exit " << outcome.status << " and:\n"
                                         << outcome.err;
}

}  // namespace corvel::clitest
