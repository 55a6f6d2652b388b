// The record of every process action taken, "process-actions.json" in the data folder, oldest
// first and capped: the newest 500 actions are kept (a busy person quits a few apps a day, so
// that is months of history in a file of about 100 KB).
//
//   ProcessActionLog log(machine.dataFolder());
//   log.append(record);                         // throws FileError; the record stays in memory
//   for (const auto& record : log.all()) ...    // oldest first
#pragma once

#include "common/JSONHistory.h"
#include "processes/ProcessActionRecord.h"

#include <cstddef>
#include <filesystem>

namespace corvel {

class ProcessActionLog : public JSONHistory<ProcessActionRecord> {
public:
    static constexpr const char* fileName = "process-actions.json";
    static constexpr std::size_t limit = 500;

    explicit ProcessActionLog(const std::filesystem::path& dataFolder)
        : JSONHistory<ProcessActionRecord>(dataFolder / fileName, limit) {}
};

}  // namespace corvel
