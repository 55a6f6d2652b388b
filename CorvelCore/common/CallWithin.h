// Runs a call that might never return (a file-system call on a network mount whose server is gone)
// with a time limit. The call runs on a thread of its own that owns everything it touches, so a
// call that hangs forever is simply abandoned: the caller gets a CallTimedOut and goes on.
//
//   auto figures = callWithin(std::chrono::seconds(20), [path] { return statvfsOf(path); });
//
// The callable must own its inputs (capture by value): it can outlive the caller.
#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace corvel {

class CallTimedOut : public std::runtime_error {
public:
    explicit CallTimedOut(std::chrono::milliseconds limit)
        : std::runtime_error("did not answer within " + describe(limit)) {}

private:
    static std::string describe(std::chrono::milliseconds limit) {
        if (limit.count() % 1000 == 0) return std::to_string(limit.count() / 1000) + " s";
        return std::to_string(limit.count()) + " ms";
    }
};

template <class Call>
auto callWithin(std::chrono::milliseconds limit, Call call) -> decltype(call()) {
    using Result = decltype(call());
    struct Shared {
        std::mutex mutex;
        std::condition_variable done;
        std::optional<Result> result;
        std::exception_ptr error;
        bool finished = false;
    };
    auto shared = std::make_shared<Shared>();
    std::thread([shared, call = std::move(call)]() mutable {
        std::optional<Result> result;
        std::exception_ptr error;
        try {
            result.emplace(call());
        } catch (...) {
            error = std::current_exception();
        }
        const std::lock_guard lock(shared->mutex);
        shared->result = std::move(result);
        shared->error = error;
        shared->finished = true;
        shared->done.notify_all();
    }).detach();
    std::unique_lock lock(shared->mutex);
    if (!shared->done.wait_for(lock, limit, [&] { return shared->finished; })) throw CallTimedOut(limit);
    if (shared->error) std::rethrow_exception(shared->error);
    return std::move(*shared->result);
}

}  // namespace corvel
