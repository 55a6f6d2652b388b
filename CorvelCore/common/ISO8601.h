// ISO 8601 dates as this code base writes and reads them: always UTC with a "Z" when written,
// leniently parsed (with or without fractional seconds, any offset, a bare date) when read,
// because persisted files and tool output both come back to us in several shapes.
//
//   auto text = ISO8601::format(now);          // "2026-11-02T09:30:00Z"
//   auto when = ISO8601::parse("2026-11-02T10:30:00+01:00");
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace corvel {

// Microsecond precision: nanosecond time points cannot reach year 1, the "distant past" that marks
// a snapshot taken before any discovery ran.
using TimePoint = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;

inline TimePoint currentTime() {
    return std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
}

namespace ISO8601 {

// UTC with a trailing "Z"; milliseconds are written only when they are not zero.
std::string format(TimePoint time);

// Absent when the text is not a date of one of the accepted shapes.
std::optional<TimePoint> parse(std::string_view text);

}  // namespace ISO8601
}  // namespace corvel
