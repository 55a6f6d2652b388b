#include "cli/VelmoraProcess.h"

#include "consent/ConsentChoices.h"
#include "consent/ConsentLedger.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
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

// Reads both pipes until the child closes them; draining them together keeps a child that
// writes much to one stream from blocking while the other is being read.
void drain(int outFd, int errFd, std::string& out, std::string& err) {
    std::array<pollfd, 2> fds{{{outFd, POLLIN, 0}, {errFd, POLLIN, 0}}};
    std::array<std::string*, 2> sinks{&out, &err};
    std::array<char, 4096> buffer{};
    int open = 2;
    while (open > 0) {
        if (::poll(fds.data(), fds.size(), -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        for (std::size_t i = 0; i < fds.size(); ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0) continue;
            const ssize_t got = ::read(fds[i].fd, buffer.data(), buffer.size());
            if (got > 0) {
                sinks[i]->append(buffer.data(), static_cast<std::size_t>(got));
            } else if (got == 0 || errno != EINTR) {
                ::close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
    for (const auto& fd : fds)
        if (fd.fd >= 0) ::close(fd.fd);
}

}  // namespace

Outcome velmora(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                Streams streams) {
    // Everything the child needs is built before fork, which leaves it only async-signal-safe calls.
    std::vector<std::string> words{CORVEL_VELMORA_BINARY};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environmentWith(environment);
    const std::vector<char*> argv = pointersTo(words);
    const std::vector<char*> envp = pointersTo(variables);

    Outcome outcome;
    int outPipe[2];
    int errPipe[2];
    if (::pipe2(outPipe, O_CLOEXEC) != 0) {
        outcome.err = std::string("cannot make a pipe: ") + std::strerror(errno);
        return outcome;
    }
    if (::pipe2(errPipe, O_CLOEXEC) != 0) {
        outcome.err = std::string("cannot make a pipe: ") + std::strerror(errno);
        ::close(outPipe[0]);
        ::close(outPipe[1]);
        return outcome;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(outPipe[1], STDOUT_FILENO);
        ::dup2(streams == Streams::merged ? outPipe[1] : errPipe[1], STDERR_FILENO);
        ::execve(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    if (child < 0) {
        outcome.err = std::string("cannot start velmora: ") + std::strerror(errno);
        ::close(outPipe[0]);
        ::close(errPipe[0]);
        return outcome;
    }
    drain(outPipe[0], errPipe[0], outcome.out, outcome.err);
    int raw = 0;
    while (::waitpid(child, &raw, 0) < 0) {
        if (errno != EINTR) return outcome;
    }
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
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

}  // namespace corvel::clitest
