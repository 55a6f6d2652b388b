#include "space/FileSizeFacts.h"

#include <algorithm>
#include <chrono>

namespace corvel {

TimePoint fileTime(std::int64_t seconds, std::int64_t nanoseconds) {
    using namespace std::chrono;
    // Times come from replies of the file system and from decoders of outside bytes, which can
    // carry any value; beyond the years ISO 8601 text can show, the conversion to microseconds
    // would overflow.
    constexpr std::int64_t earliest = -62'135'596'800;  // 0001-01-01T00:00:00Z
    constexpr std::int64_t latest = 253'402'300'799;    // 9999-12-31T23:59:59Z
    seconds = std::clamp(seconds, earliest, latest);
    nanoseconds = std::clamp<std::int64_t>(nanoseconds, 0, 999'999'999);
    return TimePoint{duration_cast<TimePoint::duration>(std::chrono::seconds{seconds}) +
                     duration_cast<TimePoint::duration>(std::chrono::nanoseconds{nanoseconds})};
}

}  // namespace corvel
