// The parts of LocalProcesses both systems answer the same way: who we are, and starting a
// program detached from us. The program is started by a short-lived intermediate child in a new
// session, so it is never our child: it outlives us, and we never leave it a zombie to reap.
#include "processes/LocalProcesses.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

extern char** environ;

namespace corvel {
namespace {

// What the intermediate child and the program write back before the program starts.
struct LaunchMessage {
    char kind;  // 'P': the program's pid; 'E': errno of a failed fork or exec
    std::int32_t value;
};

bool isExecutableFile(const std::string& path) {
    struct stat facts {};
    return ::stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// Looked up before forking: the child may only make async-signal-safe calls.
std::string resolveProgram(const std::string& program) {
    if (program.find('/') != std::string::npos) {
        if (!isExecutableFile(program))
            throw ProcessLaunchError("cannot start " + program + ": not an executable file");
        return program;
    }
    const char* searchPath = std::getenv("PATH");
    std::string folders = searchPath && *searchPath ? searchPath : "/usr/local/bin:/usr/bin:/bin";
    std::size_t start = 0;
    while (start <= folders.size()) {
        auto end = folders.find(':', start);
        if (end == std::string::npos) end = folders.size();
        const auto folder = folders.substr(start, end - start);
        if (!folder.empty()) {
            const auto candidate = folder + "/" + program;
            if (isExecutableFile(candidate)) return candidate;
        }
        start = end + 1;
    }
    throw ProcessLaunchError("cannot start " + program + ": not found in PATH");
}

void writeMessage(int fd, char kind, std::int32_t value) {
    const LaunchMessage message{kind, value};
    [[maybe_unused]] const auto written = ::write(fd, &message, sizeof message);
}

[[noreturn]] void runProgram(const char* path, char* const* argv, int reportFd) {
    // Dispositions and the mask are inherited; the app must start as the desktop would start it.
    struct sigaction plain {};
    plain.sa_handler = SIG_DFL;
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE, SIGHUP, SIGQUIT, SIGCHLD}) ::sigaction(signal, &plain, nullptr);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    const int null = ::open("/dev/null", O_RDWR);
    if (null >= 0) {
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        if (null > STDERR_FILENO) ::close(null);
    }
    ::execve(path, argv, environ);
    writeMessage(reportFd, 'E', errno);
    ::_exit(127);
}

}  // namespace

std::int32_t LocalProcesses::ownPID() {
    return static_cast<std::int32_t>(::getpid());
}

std::uint32_t LocalProcesses::currentUid() {
    return static_cast<std::uint32_t>(::getuid());
}

std::int32_t LocalProcesses::startDetached(const std::vector<std::string>& arguments) {
    if (arguments.empty()) throw ProcessLaunchError("no program to start");
    const auto path = resolveProgram(arguments.front());
    std::vector<std::string> words = arguments;
    std::vector<char*> argv;
    for (auto& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    int report[2];
    if (::pipe(report) != 0)
        throw ProcessLaunchError("cannot start " + arguments.front() + ": " + std::strerror(errno));
    for (const int fd : report) ::fcntl(fd, F_SETFD, FD_CLOEXEC);

    const pid_t intermediate = ::fork();
    if (intermediate < 0) {
        const int error = errno;
        ::close(report[0]);
        ::close(report[1]);
        throw ProcessLaunchError("cannot start " + arguments.front() + ": " + std::strerror(error));
    }
    if (intermediate == 0) {
        ::close(report[0]);
        ::setsid();
        const pid_t program = ::fork();
        if (program < 0) {
            writeMessage(report[1], 'E', errno);
            ::_exit(1);
        }
        if (program == 0) runProgram(path.c_str(), argv.data(), report[1]);
        writeMessage(report[1], 'P', static_cast<std::int32_t>(program));
        ::_exit(0);
    }

    ::close(report[1]);
    int status = 0;
    while (::waitpid(intermediate, &status, 0) < 0 && errno == EINTR) {
    }
    // The write end closes when the program's exec succeeds (close-on-exec) or it exits.
    std::int32_t pid = -1;
    int failure = 0;
    LaunchMessage message{};
    for (;;) {
        const auto got = ::read(report[0], &message, sizeof message);
        if (got < 0 && errno == EINTR) continue;
        if (got != static_cast<ssize_t>(sizeof message)) break;
        if (message.kind == 'P') pid = message.value;
        if (message.kind == 'E') failure = message.value;
    }
    ::close(report[0]);
    if (failure != 0 || pid <= 0)
        throw ProcessLaunchError("cannot start " + arguments.front() + ": " +
                                 std::strerror(failure != 0 ? failure : ECHILD));
    return pid;
}

}  // namespace corvel
