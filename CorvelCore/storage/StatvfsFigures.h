// The capacity figures of one mounted file system, already multiplied out to bytes.
#pragma once

#include <cstdint>

#include "common/Json.h"

namespace corvel {

struct StatvfsFigures {
    std::int64_t totalBytes = 0;      // f_blocks × f_frsize
    std::int64_t freeBytes = 0;       // f_bfree × f_frsize (includes the root reserve)
    std::int64_t availableBytes = 0;  // f_bavail × f_frsize (what an ordinary user may still write)

    bool operator==(const StatvfsFigures&) const = default;
};

inline void to_json(Json& j, const StatvfsFigures& f) {
    j = Json::object();
    j["totalBytes"] = f.totalBytes;
    j["freeBytes"] = f.freeBytes;
    j["availableBytes"] = f.availableBytes;
}

inline void from_json(const Json& j, StatvfsFigures& f) {
    f.totalBytes = required<std::int64_t>(j, "totalBytes");
    f.freeBytes = required<std::int64_t>(j, "freeBytes");
    f.availableBytes = required<std::int64_t>(j, "availableBytes");
}

}  // namespace corvel
