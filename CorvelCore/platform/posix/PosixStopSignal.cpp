// SIGTERM and SIGINT set a flag and wake the waiting agent through a pipe. A signal handler can
// reach nothing but process-wide state, so the flag and the pipe are the one place this code base
// keeps such state, owned by the single StopSignal alive at a time.
#include "agent/StopSignal.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace corvel {
namespace {

std::atomic<bool> stopFlag{false};
std::atomic<int> wakeWriteEnd{-1};
int wakeReadEnd = -1;
struct sigaction previousTerm {};
struct sigaction previousInt {};

extern "C" void onStopSignal(int) {
    const int savedErrno = errno;
    stopFlag.store(true);
    const int fd = wakeWriteEnd.load();
    if (fd >= 0) {
        const char byte = 1;
        [[maybe_unused]] const auto ignored = ::write(fd, &byte, 1);
    }
    errno = savedErrno;
}

}  // namespace

StopSignal::StopSignal() {
    stopFlag.store(false);
    int fds[2] = {-1, -1};
    if (::pipe(fds) == 0) {
        for (const int fd : fds) {
            ::fcntl(fd, F_SETFD, FD_CLOEXEC);
            ::fcntl(fd, F_SETFL, O_NONBLOCK);
        }
        wakeReadEnd = fds[0];
        wakeWriteEnd.store(fds[1]);
    }
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    // Tool runs in progress carry on; the agent looks at the flag between its steps.
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, &previousTerm);
    ::sigaction(SIGINT, &action, &previousInt);
}

StopSignal::~StopSignal() {
    ::sigaction(SIGTERM, &previousTerm, nullptr);
    ::sigaction(SIGINT, &previousInt, nullptr);
    const int writeEnd = wakeWriteEnd.exchange(-1);
    if (writeEnd >= 0) ::close(writeEnd);
    if (wakeReadEnd >= 0) ::close(wakeReadEnd);
    wakeReadEnd = -1;
}

bool StopSignal::requested() const {
    return stopFlag.load();
}

bool StopSignal::waitFor(std::chrono::milliseconds duration) const {
    const auto deadline = std::chrono::steady_clock::now() + duration;
    while (!requested()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) break;
        if (wakeReadEnd < 0) {
            // Without a pipe, poll the flag a few times a second.
            ::usleep(static_cast<useconds_t>(std::min<long long>(left.count(), 200) * 1000));
            continue;
        }
        pollfd wake{wakeReadEnd, POLLIN, 0};
        const int ready = ::poll(&wake, 1, static_cast<int>(std::min<long long>(left.count(), 60'000)));
        if (ready > 0) {
            char drain[16];
            while (::read(wakeReadEnd, drain, sizeof drain) > 0) {
            }
        }
    }
    return requested();
}

}  // namespace corvel
