// What the background agent keeps in the data folder between cycles and between runs, one atomic
// JSON file each: its status for people ("agent-status.json"), the alerts it already raised
// ("agent-state.json"), the last snapshot it saw ("agent-inventory.json") and the monitor events
// ("agent-events.json", a capped list). Every key is optional when read back, so a file written by
// an older agent stays valid.
//
//   AgentFiles files(machine.dataFolder());
//   auto state = AgentFiles::readState(files.state());      // an unreadable file reads as empty
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "diagnostics/Severity.h"
#include "storage/StorageSnapshot.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct AgentStatus {
    std::int64_t pid = 0;
    TimePoint startedAt{};
    bool isRunning = false;  // false once the agent has exited
    std::int64_t cycles = 0;  // cycles completed by this run
    std::int64_t intervalSeconds = 0;
    bool monitoringEnabled = true;
    bool notificationsEnabled = true;
    std::optional<TimePoint> lastCycleAt;
    std::optional<double> lastCycleSeconds;  // how long the last cycle took
    std::optional<TimePoint> nextCycleAt;
    std::int64_t volumeCount = 0;
    std::int64_t findingCount = 0;
    std::int64_t eventCount = 0;  // events of the last cycle
    std::vector<std::string> warnings;  // the last cycle's problems

    bool operator==(const AgentStatus&) const = default;
};

CORVEL_JSON_LENIENT(AgentStatus, pid, startedAt, isRunning, cycles, intervalSeconds, monitoringEnabled,
                    notificationsEnabled, lastCycleAt, lastCycleSeconds, nextCycleAt, volumeCount, findingCount,
                    eventCount, warnings)

struct AgentState {
    std::map<std::string, Severity> activeAlerts;  // the alert tracker's map

    bool operator==(const AgentState&) const = default;
};

CORVEL_JSON_LENIENT(AgentState, activeAlerts)

struct AgentInventory {
    TimePoint updatedAt{};
    StorageSnapshot snapshot;  // the last one seen: the next cycle's mount changes are against it

    bool operator==(const AgentInventory&) const = default;
};

CORVEL_JSON_LENIENT(AgentInventory, updatedAt, snapshot)

class AgentFiles {
public:
    static constexpr const char* statusName = "agent-status.json";
    static constexpr const char* eventsName = "agent-events.json";
    static constexpr const char* stateName = "agent-state.json";
    static constexpr const char* inventoryName = "agent-inventory.json";
    static constexpr const char* lockName = "agent.lock";
    static constexpr std::size_t eventLimit = 1000;

    explicit AgentFiles(std::filesystem::path folder) : folder_(std::move(folder)) {}

    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path status() const { return folder_ / statusName; }
    std::filesystem::path events() const { return folder_ / eventsName; }
    std::filesystem::path state() const { return folder_ / stateName; }
    std::filesystem::path inventory() const { return folder_ / inventoryName; }
    std::filesystem::path lock() const { return folder_ / lockName; }

    // A record read back: absent when there is no file; `problem` says why an existing file was
    // not usable (it then reads as absent too).
    template <class T>
    struct Read {
        std::optional<T> value;
        std::optional<std::string> problem;
    };

    template <class T>
    static Read<T> read(const std::filesystem::path& path);

    // Throws FileError; the old file is then untouched.
    template <class T>
    static void write(const std::filesystem::path& path, const T& record) {
        writeText(path, Json(record).dump(1));
    }

private:
    static std::optional<std::string> readText(const std::filesystem::path& path);
    static Json parse(const std::string& text, const std::filesystem::path& path);
    static void writeText(const std::filesystem::path& path, const std::string& text);

    std::filesystem::path folder_;
};

template <class T>
AgentFiles::Read<T> AgentFiles::read(const std::filesystem::path& path) {
    Read<T> result;
    try {
        const auto text = readText(path);
        if (!text) return result;
        result.value = parse(*text, path).template get<T>();
    } catch (const std::exception& error) {
        result.value.reset();
        result.problem = path.filename().string() + " could not be read (" + error.what() + ")";
    }
    return result;
}

}  // namespace corvel
