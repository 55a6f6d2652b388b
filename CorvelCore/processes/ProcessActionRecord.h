// One action taken on a process group, as the log keeps it: what was done, to which processes,
// and what came of it in the words the person saw.
//
//   ProcessActionRecord record(now, ProcessAction::quit, "Safari", {412, 415}, "Quit: 2 processes ended.");
//   record.id   // a new UUID
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "processes/ProcessAction.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvel {

struct ProcessActionRecord {
    std::string id;  // UUID
    TimePoint date{};
    ProcessAction action = ProcessAction::quit;
    std::string name;
    std::vector<std::int32_t> pids;
    std::string outcome;

    ProcessActionRecord() = default;
    // A record of a new action, with a new id.
    ProcessActionRecord(TimePoint date, ProcessAction action, std::string name, std::vector<std::int32_t> pids,
                        std::string outcome);

    bool operator==(const ProcessActionRecord&) const = default;
};

CORVEL_JSON_RECORD(ProcessActionRecord, id, date, action, name, pids, outcome)

}  // namespace corvel
