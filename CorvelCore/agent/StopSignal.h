// A polite request to stop (SIGTERM from the service manager, Ctrl-C on a terminal) as a flag the
// agent looks at between its steps, and a wait that ends early when the request comes. While an
// object exists, those signals no longer end the process at once; the agent finishes the step it
// is in and exits normally.
//
//   StopSignal stop;                          // one at a time per process
//   while (!stop.requested()) { cycle(); stop.waitFor(interval); }
#pragma once

#include <chrono>

namespace corvel {

class StopSignal {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    bool requested() const;
    // Returns when `duration` has passed or a stop was requested, whichever comes first; whether
    // a stop was requested.
    bool waitFor(std::chrono::milliseconds duration) const;
};

}  // namespace corvel
