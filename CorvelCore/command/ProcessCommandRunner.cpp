#include "command/ProcessCommandRunner.h"

#include "command/CommandError.h"
#include "common/Text.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace corvel {
namespace {

// A tool that ignores the polite request is killed after this grace, so that a run can never
// hang the caller; the result is still reported as a time-out.
constexpr auto killGrace = std::chrono::seconds(5);

class Pipe {
public:
    Pipe() {
        if (::pipe(fds_) != 0) throw CommandError::launchFailed(std::strerror(errno));
        ::fcntl(fds_[0], F_SETFD, FD_CLOEXEC);
        ::fcntl(fds_[1], F_SETFD, FD_CLOEXEC);
    }
    ~Pipe() {
        closeRead();
        closeWrite();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    int readEnd() const { return fds_[0]; }
    int writeEnd() const { return fds_[1]; }
    void closeRead() { closeEnd(0); }
    void closeWrite() { closeEnd(1); }

private:
    void closeEnd(int i) {
        if (fds_[i] >= 0) ::close(fds_[i]);
        fds_[i] = -1;
    }
    int fds_[2] = {-1, -1};
};

std::vector<std::string> environmentWithCLocale() {
    std::vector<std::string> result;
    for (char** entry = environ; entry && *entry; ++entry) {
        if (startsWith(*entry, "LC_ALL=")) continue;
        result.emplace_back(*entry);
    }
    result.emplace_back("LC_ALL=C");
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (auto& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

}  // namespace

std::string ProcessCommandRunner::run(const std::string& executable, const std::vector<std::string>& arguments) {
    Pipe out, err;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out.writeEnd(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err.writeEnd(), STDERR_FILENO);

    std::vector<std::string> argumentTexts;
    argumentTexts.reserve(arguments.size() + 1);
    argumentTexts.push_back(executable);
    argumentTexts.insert(argumentTexts.end(), arguments.begin(), arguments.end());
    auto argv = pointers(argumentTexts);
    auto environmentTexts = environmentWithCLocale();
    auto envp = pointers(environmentTexts);

    pid_t pid = -1;
    const int spawnError = ::posix_spawn(&pid, executable.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (spawnError != 0) throw CommandError::launchFailed(std::strerror(spawnError));
    out.closeWrite();
    err.closeWrite();

    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(timeout_));
    bool timedOut = false;
    bool killed = false;
    std::string standardOutput, standardError;
    int status = 0;
    bool reaped = false;

    pollfd fds[2] = {{out.readEnd(), POLLIN, 0}, {err.readEnd(), POLLIN, 0}};
    std::string* sinks[2] = {&standardOutput, &standardError};
    char buffer[65536];
    while (fds[0].fd >= 0 || fds[1].fd >= 0) {
        const auto now = Clock::now();
        if (!timedOut && now >= deadline) {
            timedOut = true;
            ::kill(pid, SIGTERM);
        }
        if (timedOut && !killed && now >= deadline + killGrace) {
            killed = true;
            ::kill(pid, SIGKILL);
        }
        // After a time-out, stop waiting for pipes once the tool itself is gone: a grandchild
        // may hold them open indefinitely.
        if (timedOut && !reaped && ::waitpid(pid, &status, WNOHANG) == pid) reaped = true;
        if (timedOut && reaped) break;

        const auto until = timedOut ? (killed ? now + std::chrono::milliseconds(100) : deadline + killGrace) : deadline;
        const auto waitMs = std::max<long long>(
            1, std::chrono::duration_cast<std::chrono::milliseconds>(until - now).count());
        const int ready = ::poll(fds, 2, static_cast<int>(std::min<long long>(waitMs, 100)));
        if (ready < 0) {
            if (errno == EINTR) continue;
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0) continue;
            const ssize_t got = ::read(fds[i].fd, buffer, sizeof buffer);
            if (got > 0) {
                sinks[i]->append(buffer, static_cast<std::size_t>(got));
            } else if (got == 0 || (errno != EINTR && errno != EAGAIN)) {
                fds[i].fd = -1;  // end of file (or a broken pipe): this stream is done
            }
        }
    }
    out.closeRead();
    err.closeRead();

    while (!reaped) {
        if (::waitpid(pid, &status, 0) == pid) reaped = true;
        else if (errno != EINTR) break;
    }

    if (timedOut) throw CommandError::timedOut();
    int exitStatus = 0;
    if (WIFEXITED(status)) exitStatus = WEXITSTATUS(status);
    else if (WIFSIGNALED(status)) exitStatus = 128 + WTERMSIG(status);
    if (exitStatus != 0) throw CommandError::failed(exitStatus, commandFailureMessage(standardError, standardOutput));
    return standardOutput;
}

}  // namespace corvel
