#include "LongWork.h"

#include <pthread.h>

namespace corvel::cli {

InterruptWatch::InterruptWatch() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals_, &previous_);
    waiter_ = std::thread([this] {
        int received = 0;
        while (sigwait(&signals_, &received) == 0) {
            if (closing_.load()) return;
            interrupted_.store(true);
        }
    });
}

InterruptWatch::~InterruptWatch() {
    closing_.store(true);
    pthread_kill(waiter_.native_handle(), SIGINT);
    waiter_.join();
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

ProgressLine::ProgressLine(CliContext& context)
    : context_(context), enabled_(context.showProgress() && !context.json()) {}

void ProgressLine::show(const std::string& text) {
    if (!enabled_) return;
    // One column stays free: some terminals wrap when the last one is written.
    const std::size_t width = terminalColumns(context_.environment()) - 1;
    context_.err() << "\r\033[K" << elideMiddle(text, width) << std::flush;
    shown_ = true;
}

void ProgressLine::clear() {
    if (shown_) context_.err() << "\r\033[K" << std::flush;
    shown_ = false;
}

}  // namespace corvel::cli
