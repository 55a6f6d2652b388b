// The user's settings as one record. Every key is optional when decoding and a missing key keeps
// the value the record already holds, so decoding into `CorvelSettings::defaults(home)` gives the
// defaults for whatever the file leaves out (a file written by an older version stays valid).
//
//   CorvelSettings settings = CorvelSettings::defaults(home);
//   from_json(documentFromDisk, settings);
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "diagnostics/DiagnosticThresholds.h"
#include "diagnostics/ExpectedVolume.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct CorvelSettings {
    bool monitoringEnabled = true;
    int intervalMinutes = 5;  // the monitoring interval
    bool notificationsEnabled = true;
    DiagnosticThresholds thresholds;
    std::vector<std::string> customFootprintPaths;
    std::vector<std::string> projectRoots;                          // absolute paths; order matters (first match wins)
    std::optional<std::string> workspace;                           // the workspace folder, when the user chose one
    int agentIntervalMinutes = 15;                                  // the background agent's check interval
    std::map<std::string, TimePoint> verifiedVolumes;               // volume id -> last successful verification
    std::vector<HealthAssessment::ExpectedVolume> expectedVolumes;  // volumes the setup depends on
    std::optional<std::string> updateRepository;                    // OWNER/NAME of the releases; absent: Velmora's own
    std::optional<std::string> metricsTextfileDirectory;            // the agent writes velmora.prom there each cycle

    // The defaults, with the usual project folders in `home` as project roots.
    static CorvelSettings defaults(const std::filesystem::path& home);

    // A sentence naming the first value that is out of range, or absent when all make sense.
    std::optional<std::string> validationProblem() const;

    bool operator==(const CorvelSettings&) const = default;
};

void to_json(Json& j, const CorvelSettings& settings);
// Overwrites only the keys present in `j`; throws DecodingError naming a key of the wrong type.
void from_json(const Json& j, CorvelSettings& settings);

}  // namespace corvel
