#include "space/FileSizeFacts.h"

#include <algorithm>
#include <chrono>

namespace corvel {

void to_json(Json& json, const FileSizeFacts& facts) {
    json = Json::object();
    json["device"] = facts.device;
    json["fileID"] = facts.fileID;
    json["linkCount"] = facts.linkCount;
    putOptional(json, "modified", facts.modified);
    json["logicalBytes"] = facts.logicalBytes;
    json["allocatedBytes"] = facts.allocatedBytes;
    putOptional(json, "exclusiveBytes", facts.exclusiveBytes);
}

void from_json(const Json& json, FileSizeFacts& facts) {
    facts.device = required<std::int32_t>(json, "device");
    facts.fileID = required<std::uint64_t>(json, "fileID");
    facts.linkCount = required<std::uint32_t>(json, "linkCount");
    facts.modified = optionalValue<TimePoint>(json, "modified");
    facts.logicalBytes = required<std::int64_t>(json, "logicalBytes");
    facts.allocatedBytes = required<std::int64_t>(json, "allocatedBytes");
    facts.exclusiveBytes = optionalValue<std::int64_t>(json, "exclusiveBytes");
}

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
