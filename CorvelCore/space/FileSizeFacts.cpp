#include "space/FileSizeFacts.h"

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
    return TimePoint{duration_cast<TimePoint::duration>(std::chrono::seconds{seconds}) +
                     duration_cast<TimePoint::duration>(std::chrono::nanoseconds{nanoseconds})};
}

}  // namespace corvel
