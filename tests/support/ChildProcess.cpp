#include "support/ChildProcess.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace corvel::testing {

ChildProcess::ChildProcess(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = arguments;
    std::vector<char*> argv;
    for (auto& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    const int error = posix_spawnp(&pid_, argv[0], nullptr, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) throw std::runtime_error("cannot start " + arguments.front() + ": " + std::strerror(error));
}

ChildProcess::~ChildProcess() {
    if (pid_ <= 0 || reaped_) return;
    ::kill(-pid_, SIGKILL);
    int status = 0;
    ::waitpid(pid_, &status, 0);
}

bool ChildProcess::isRunning() {
    if (reaped_) return false;
    int status = 0;
    const pid_t result = ::waitpid(pid_, &status, WNOHANG);
    if (result == pid_) reaped_ = true;
    return result == 0;
}

std::optional<int> ChildProcess::waitFor(std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        int status = 0;
        const pid_t result = ::waitpid(pid_, &status, WNOHANG);
        if (result == pid_) {
            reaped_ = true;
            return status;
        }
        if (std::chrono::steady_clock::now() >= deadline) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

}  // namespace corvel::testing
