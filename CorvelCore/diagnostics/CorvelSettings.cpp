#include "diagnostics/CorvelSettings.h"

#include "common/RepositoryName.h"

#include <fmt/format.h>
#include <array>

namespace corvel {

namespace {

constexpr int maximumIntervalMinutes = 24 * 60;

template <class T>
void readIfPresent(const Json& j, const char* key, T& target) {
    if (auto value = optionalValue<T>(j, key)) target = std::move(*value);
}

}  // namespace

CorvelSettings CorvelSettings::defaults(const std::filesystem::path& home) {
    static constexpr std::array<const char*, 4> folders{"Developer", "Projects", "Code", "src"};
    CorvelSettings settings;
    for (const char* folder : folders) settings.projectRoots.push_back((home / folder).string());
    return settings;
}

std::optional<std::string> CorvelSettings::validationProblem() const {
    if (intervalMinutes < 1 || intervalMinutes > maximumIntervalMinutes)
        return fmt::format("intervalMinutes must be from 1 to {}, not {}", maximumIntervalMinutes, intervalMinutes);
    if (agentIntervalMinutes < 1 || agentIntervalMinutes > maximumIntervalMinutes)
        return fmt::format("agentIntervalMinutes must be from 1 to {}, not {}", maximumIntervalMinutes,
                           agentIntervalMinutes);
    if (auto problem = thresholds.validationProblem()) return "thresholds." + *problem;
    for (const auto& root : projectRoots)
        if (root.empty() || root.front() != '/') return "projectRoots must hold absolute paths, not '" + root + "'";
    for (const auto& path : customFootprintPaths)
        if (path.empty() || path.front() != '/')
            return "customFootprintPaths must hold absolute paths, not '" + path + "'";
    if (workspace && (workspace->empty() || workspace->front() != '/'))
        return "workspace must be an absolute path, not '" + *workspace + "'";
    for (const auto& volume : expectedVolumes)
        if (volume.volumeID.empty() || volume.name.empty()) return "expectedVolumes entries need a volumeID and a name";
    if (updateRepository && !RepositoryName::isValid(*updateRepository))
        return "updateRepository must be a GitHub repository as OWNER/NAME, not '" + *updateRepository + "'";
    if (metricsTextfileDirectory && (metricsTextfileDirectory->empty() || metricsTextfileDirectory->front() != '/'))
        return "metricsTextfileDirectory must be an absolute path, not '" + *metricsTextfileDirectory + "'";
    return std::nullopt;
}

void to_json(Json& j, const CorvelSettings& settings) {
    j = Json{{"monitoringEnabled", settings.monitoringEnabled},       {"intervalMinutes", settings.intervalMinutes},
             {"notificationsEnabled", settings.notificationsEnabled}, {"thresholds", settings.thresholds},
             {"customFootprintPaths", settings.customFootprintPaths}, {"projectRoots", settings.projectRoots}};
    putOptional(j, "workspace", settings.workspace);
    j["agentIntervalMinutes"] = settings.agentIntervalMinutes;
    Json verified = Json::object();
    for (const auto& [volumeID, when] : settings.verifiedVolumes) verified[volumeID] = when;
    j["verifiedVolumes"] = std::move(verified);
    j["expectedVolumes"] = settings.expectedVolumes;
    putOptional(j, "updateRepository", settings.updateRepository);
    putOptional(j, "metricsTextfileDirectory", settings.metricsTextfileDirectory);
}

void from_json(const Json& j, CorvelSettings& settings) {
    if (!j.is_object()) throw DecodingError("settings must be a JSON object");
    readIfPresent(j, "monitoringEnabled", settings.monitoringEnabled);
    readIfPresent(j, "intervalMinutes", settings.intervalMinutes);
    readIfPresent(j, "notificationsEnabled", settings.notificationsEnabled);
    readIfPresent(j, "thresholds", settings.thresholds);
    readIfPresent(j, "customFootprintPaths", settings.customFootprintPaths);
    readIfPresent(j, "projectRoots", settings.projectRoots);
    if (auto workspace = optionalValue<std::string>(j, "workspace")) settings.workspace = std::move(*workspace);
    readIfPresent(j, "agentIntervalMinutes", settings.agentIntervalMinutes);
    if (const auto found = j.find("verifiedVolumes"); found != j.end() && !found->is_null()) {
        if (!found->is_object()) throw DecodingError("key 'verifiedVolumes' must be an object of dates");
        std::map<std::string, TimePoint> verified;
        for (const auto& [volumeID, when] : found->items())
            verified[volumeID] = decodeValue<TimePoint>(when, "verifiedVolumes");
        settings.verifiedVolumes = std::move(verified);
    }
    readIfPresent(j, "expectedVolumes", settings.expectedVolumes);
    if (auto repository = optionalValue<std::string>(j, "updateRepository"))
        settings.updateRepository = std::move(*repository);
    if (auto folder = optionalValue<std::string>(j, "metricsTextfileDirectory"))
        settings.metricsTextfileDirectory = std::move(*folder);
}

}  // namespace corvel
