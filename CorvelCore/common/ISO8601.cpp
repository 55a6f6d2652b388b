#include "common/ISO8601.h"

#include <cctype>
#include <cstdio>

namespace corvel::ISO8601 {
namespace {


// Howard Hinnant's days-from-civil: exact for the proleptic Gregorian calendar, no time zone
// database needed and no dependence on the process's TZ.
std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const auto yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void civilFromDays(std::int64_t z, std::int64_t& y, unsigned& m, unsigned& d) {
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const auto doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    y = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    y += m <= 2;
}

class Cursor {
public:
    explicit Cursor(std::string_view text) : text_(text) {}
    bool atEnd() const { return pos_ >= text_.size(); }
    char peek() const { return atEnd() ? '\0' : text_[pos_]; }
    bool accept(char c) {
        if (peek() != c) return false;
        ++pos_;
        return true;
    }
    // Exactly `count` digits.
    std::optional<int> digits(int count) {
        int value = 0;
        for (int i = 0; i < count; ++i) {
            if (atEnd() || !std::isdigit(static_cast<unsigned char>(text_[pos_]))) return std::nullopt;
            value = value * 10 + (text_[pos_++] - '0');
        }
        return value;
    }
    // Any number of digits as a fraction of a second, in nanoseconds.
    std::int64_t fractionNanos() {
        std::int64_t nanos = 0;
        int used = 0;
        while (!atEnd() && std::isdigit(static_cast<unsigned char>(text_[pos_]))) {
            if (used < 9) {
                nanos = nanos * 10 + (text_[pos_] - '0');
                ++used;
            }
            ++pos_;
        }
        for (; used < 9; ++used) nanos *= 10;
        return nanos;
    }

private:
    std::string_view text_;
    std::size_t pos_ = 0;
};

}  // namespace

std::string format(TimePoint time) {
    using namespace std::chrono;
    const auto millis = duration_cast<milliseconds>(time.time_since_epoch()).count();
    std::int64_t days = millis / 86'400'000;
    std::int64_t rest = millis % 86'400'000;
    if (rest < 0) {
        rest += 86'400'000;
        --days;
    }
    std::int64_t year = 0;
    unsigned month = 0, day = 0;
    civilFromDays(days, year, month, day);
    const auto hour = rest / 3'600'000, minute = rest / 60'000 % 60, second = rest / 1000 % 60,
               ms = rest % 1000;
    char buffer[48];
    if (ms != 0) {
        std::snprintf(buffer, sizeof buffer, "%04lld-%02u-%02uT%02lld:%02lld:%02lld.%03lldZ",
                      static_cast<long long>(year), month, day, static_cast<long long>(hour),
                      static_cast<long long>(minute), static_cast<long long>(second),
                      static_cast<long long>(ms));
    } else {
        std::snprintf(buffer, sizeof buffer, "%04lld-%02u-%02uT%02lld:%02lld:%02lldZ",
                      static_cast<long long>(year), month, day, static_cast<long long>(hour),
                      static_cast<long long>(minute), static_cast<long long>(second));
    }
    return buffer;
}

std::optional<TimePoint> parse(std::string_view text) {
    Cursor c(text);
    const auto year = c.digits(4);
    if (!year || !c.accept('-')) return std::nullopt;
    const auto month = c.digits(2);
    if (!month || !c.accept('-')) return std::nullopt;
    const auto day = c.digits(2);
    if (!day || *month < 1 || *month > 12 || *day < 1 || *day > 31) return std::nullopt;

    int hour = 0, minute = 0, second = 0;
    std::int64_t nanos = 0;
    std::int64_t offsetSeconds = 0;
    if (!c.atEnd()) {
        if (!c.accept('T') && !c.accept('t') && !c.accept(' ')) return std::nullopt;
        const auto h = c.digits(2);
        if (!h || !c.accept(':')) return std::nullopt;
        const auto mi = c.digits(2);
        if (!mi) return std::nullopt;
        hour = *h;
        minute = *mi;
        if (c.accept(':')) {
            const auto s = c.digits(2);
            if (!s) return std::nullopt;
            second = *s;
            if (c.accept('.') || c.accept(',')) nanos = c.fractionNanos();
        }
        if (hour > 23 || minute > 59 || second > 60) return std::nullopt;
        if (c.accept('Z') || c.accept('z')) {
        } else if (c.peek() == '+' || c.peek() == '-') {
            const int sign = c.peek() == '-' ? -1 : 1;
            c.accept(c.peek());
            const auto oh = c.digits(2);
            if (!oh) return std::nullopt;
            c.accept(':');
            const auto om = c.digits(2);
            if (!om) return std::nullopt;
            offsetSeconds = sign * (*oh * 3600 + *om * 60);
        } else if (!c.atEnd()) {
            return std::nullopt;
        }
        // A time without a zone designator is taken as UTC: that is what we write.
    }
    if (!c.atEnd()) return std::nullopt;

    using namespace std::chrono;
    const std::int64_t days = daysFromCivil(*year, static_cast<unsigned>(*month), static_cast<unsigned>(*day));
    const std::int64_t seconds = days * 86400 + hour * 3600 + minute * 60 + second - offsetSeconds;
    return TimePoint(microseconds(seconds * 1'000'000 + nanos / 1000));
}

}  // namespace corvel::ISO8601
