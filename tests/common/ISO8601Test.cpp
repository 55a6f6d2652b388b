#include "common/ISO8601.h"
#include "common/Json.h"

#include <gtest/gtest.h>

using namespace corvel;
using namespace std::chrono;

namespace {
TimePoint at(std::int64_t unixSeconds, std::int64_t millis = 0) {
    return TimePoint(duration_cast<microseconds>(seconds(unixSeconds) + milliseconds(millis)));
}
}  // namespace

TEST(ISO8601, FormatsUTCWithMillisecondsOnlyWhenPresent) {
    EXPECT_EQ(ISO8601::format(at(0)), "1970-01-01T00:00:00Z");
    EXPECT_EQ(ISO8601::format(at(1793611800)), "2026-11-02T09:30:00Z");
    EXPECT_EQ(ISO8601::format(at(1793611800, 250)), "2026-11-02T09:30:00.250Z");
    EXPECT_EQ(ISO8601::format(at(951782400)), "2000-02-29T00:00:00Z");  // leap day
    EXPECT_EQ(ISO8601::format(at(-1, 500)), "1969-12-31T23:59:59.500Z");
}

TEST(ISO8601, ParsesTheShapesWeMeet) {
    EXPECT_EQ(ISO8601::parse("2026-11-02T09:30:00Z"), at(1793611800));
    EXPECT_EQ(ISO8601::parse("2026-11-02T09:30:00.25Z"), at(1793611800, 250));
    EXPECT_EQ(ISO8601::parse("2026-11-02T10:30:00+01:00"), at(1793611800));
    EXPECT_EQ(ISO8601::parse("2026-11-02T04:30:00-0500"), at(1793611800));
    EXPECT_EQ(ISO8601::parse("2026-11-02"), at(1793577600));
    EXPECT_EQ(ISO8601::parse("2026-11-02T09:30Z"), at(1793611800));
}

TEST(ISO8601, RejectsWhatIsNotADate) {
    for (const char* text : {"", "yesterday", "2026-13-01", "2026-11-02T25:00:00Z", "2026-11-02T09:30:00Q",
                             "2026-11-02T09:30:00Z trailing", "26-11-02"}) {
        EXPECT_FALSE(ISO8601::parse(text)) << text;
    }
}

TEST(ISO8601, RoundTripsThroughJSON) {
    const TimePoint when = at(1793611800, 125);
    Json j = when;
    EXPECT_EQ(j, "2026-11-02T09:30:00.125Z");
    EXPECT_EQ(j.get<TimePoint>(), when);
    EXPECT_THROW(Json("not a date").get<TimePoint>(), DecodingError);
    EXPECT_THROW(Json(12).get<TimePoint>(), DecodingError);
}
