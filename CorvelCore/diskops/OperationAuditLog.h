// The record behind the promise that every disk operation a person confirms "is logged": one entry
// per confirmed attempt, success or failure, in "operations-audit.json" in the data folder, the
// newest 1000 kept. A missing or corrupt file reads as an empty log and is replaced by the next
// entry. Safe to share between threads.
//
//   OperationAuditLog log(OperationAuditLog::fileIn(machine.dataFolder()));
//   log.record(entry);                      // throws FileError; the entry stays in memory
//   for (const auto& entry : log.entries()) ...   // oldest first
#pragma once

#include "common/ISO8601.h"
#include "common/JSONHistory.h"
#include "common/Json.h"
#include "diskops/DiskObject.h"
#include "diskops/DiskOperation.h"
#include "diskops/PreflightCheck.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

class OperationAuditLog {
public:
    struct Entry {
        std::string id;  // a new random UUID per entry
        TimePoint date{};  // when the outcome was known
        DiskOperation operation = DiskOperation::mount;
        std::string target;  // "Volume disk4s1 (Backup)"
        std::optional<std::string> targetUUID;
        std::vector<PreflightCheck> preflight;  // the checks the execution relied on
        bool confirmed = true;
        std::string outcome;
        bool succeeded = false;

        bool operator==(const Entry&) const = default;
    };

    static constexpr std::size_t limit = 1000;
    static constexpr const char* fileName = "operations-audit.json";
    static std::filesystem::path fileIn(const std::filesystem::path& dataFolder) { return dataFolder / fileName; }

    // Reads nothing yet.
    explicit OperationAuditLog(std::filesystem::path fileURL) : history_(std::move(fileURL), limit) {}

    const std::filesystem::path& fileURL() const { return history_.file(); }

    // Appends, keeps the newest `limit`, rewrites the file atomically. Throws FileError.
    void record(Entry entry) { history_.append(std::move(entry)); }
    // Oldest first.
    std::vector<Entry> entries() { return history_.all(); }
    // Why an existing file read as empty.
    std::optional<std::string> loadProblem() { return history_.loadProblem(); }

    // Kind raw value + " " + identifier + " (" + name + ")": how an entry and the confirmation
    // question name the target.
    static std::string targetText(const DiskObject& target);

private:
    JSONHistory<Entry> history_;
};

CORVEL_JSON_RECORD(OperationAuditLog::Entry, id, date, operation, target, targetUUID, preflight, confirmed, outcome,
                   succeeded)

}  // namespace corvel
