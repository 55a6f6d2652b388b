// Running long work from a command: the work runs on its own thread while this one redraws one
// progress line on stderr (terminals only, cut to the terminal's width) and turns Ctrl-C into a
// cancellation request the work polls. An interrupted command still prints what it measured.
//
//   auto outcome = runLongWork(context,
//       [&](const CancelCheck& isCancelled) { return SpaceScanner::scan(root, options, progress, isCancelled); },
//       [&] { return "Scanning " + progress.snapshot().currentPath; });
//   if (outcome.interrupted) { /* say the result is partial */ }
#pragma once

#include "CliContext.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <future>
#include <string>
#include <thread>

namespace corvel::cli {

using CancelCheck = std::function<bool()>;

// Turns Ctrl-C into a cancellation request for as long as it lives: SIGINT is blocked in this
// thread (and so in every worker thread started from it) and collected by one waiting thread.
class InterruptWatch {
public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;
    bool interrupted() const { return interrupted_.load(); }

private:
    sigset_t signals_{};
    sigset_t previous_{};
    std::atomic<bool> interrupted_{false};
    std::atomic<bool> closing_{false};
    std::thread waiter_;
};

// One line of progress on stderr, redrawn in place and cleared when done. Only on a terminal and
// never with --json; cut to the terminal's width (long paths lose their middle) so that a redraw
// never wraps and leaves stale lines behind.
class ProgressLine {
public:
    explicit ProgressLine(CliContext& context);
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const std::string& text);
    void clear();

private:
    CliContext& context_;
    bool enabled_;
    bool shown_ = false;
};

template <class Result>
struct LongWorkOutcome {
    Result result;
    bool interrupted = false;
    double seconds = 0;
};

// Runs `work` with a cancellation check while `describe` feeds the progress line every 100 ms.
// Exceptions of the work reach the caller.
template <class Work, class Describe>
auto runLongWork(CliContext& context, Work work, Describe describe)
    -> LongWorkOutcome<decltype(work(std::declval<const CancelCheck&>()))> {
    using Result = decltype(work(std::declval<const CancelCheck&>()));
    const auto started = std::chrono::steady_clock::now();
    InterruptWatch watch;
    const CancelCheck isCancelled = [&watch] { return watch.interrupted(); };
    auto running = std::async(std::launch::async, [&] { return work(isCancelled); });
    {
        ProgressLine progress(context);
        while (running.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) progress.show(describe());
    }
    LongWorkOutcome<Result> outcome{running.get(), watch.interrupted(), 0};
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    return outcome;
}

}  // namespace corvel::cli
