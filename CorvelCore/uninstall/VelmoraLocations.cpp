#include "uninstall/VelmoraLocations.h"

#include "common/DataFolder.h"
#include "common/PathText.h"
#include "common/Text.h"

#include <algorithm>

namespace corvel {
namespace {

// An XDG variable counts only when it holds an absolute path, as the XDG rules say.
std::filesystem::path xdgFolder(const std::optional<std::string>& variable, const std::filesystem::path& fallback) {
    if (variable && !variable->empty() && variable->front() == '/') return *variable;
    return fallback;
}

}  // namespace

VelmoraLocations VelmoraLocations::forThisUser(const Environment& environment,
                                               const std::filesystem::path& dataFolder) {
    VelmoraLocations locations;
    locations.platform = hostPlatform();
    locations.home = userHome(environment);
    locations.dataFolder = dataFolder;
    locations.xdgDataHome = lookup(environment, "XDG_DATA_HOME");
    locations.xdgConfigHome = lookup(environment, "XDG_CONFIG_HOME");
    locations.xdgCacheHome = lookup(environment, "XDG_CACHE_HOME");
    const auto standard = defaultDataFolder(locations.platform, locations.home.string(), locations.xdgDataHome);
    locations.dataFolderIsDefault = normalPath(dataFolder.string()) == normalPath(standard.string());
    return locations;
}

const std::vector<std::string>& VelmoraLocations::dataFileNames() {
    static const std::vector<std::string> names{
        "settings.json",
        "consent.json",
        "history.json",
        "operations-audit.json",
        "cleanup-simulations.json",
        "space-summary.json",
        "process-actions.json",
        "agent-status.json",
        "agent-events.json",
        "agent-state.json",
        "agent-inventory.json",
        "legacy-migration.json",
    };
    return names;
}

bool VelmoraLocations::isDataFileName(std::string_view name) {
    const auto& names = dataFileNames();
    if (std::find(names.begin(), names.end(), name) != names.end()) return true;
    if (!startsWith(name, ".")) return false;
    name.remove_prefix(1);
    return std::any_of(names.begin(), names.end(), [name](const std::string& known) {
        return startsWith(name, known + ".") && name.size() == known.size() + 7;
    });
}

KeptKind VelmoraLocations::kindOfDataFile(std::string_view name) {
    return name == "settings.json" ? KeptKind::settings : KeptKind::dataFile;
}

std::vector<KeptLocation> VelmoraLocations::outsideDataFolder() const {
    const std::string id(applicationID);
    if (platform == Platform::macos) {
        const auto library = home / "Library";
        return {
            {library / "Preferences" / (id + ".plist"), KeptKind::settings},
            {library / "LaunchAgents" / (id + ".agent.plist"), KeptKind::agentRegistration},
            {library / "Caches" / id, KeptKind::cache},
            {library / "Caches" / "Velmora", KeptKind::cache},
        };
    }
    const auto config = xdgFolder(xdgConfigHome, home / ".config");
    return {
        {config / "velmora", KeptKind::settings},
        {config / "autostart" / "velmora-agent.desktop", KeptKind::agentRegistration},
        {config / "systemd" / "user" / "velmora-agent.service", KeptKind::agentRegistration},
        {xdgFolder(xdgCacheHome, home / ".cache") / "velmora", KeptKind::cache},
    };
}

std::vector<std::filesystem::path> VelmoraLocations::legacyDataFolders() const {
    const auto parent = defaultDataFolder(platform, home.string(), xdgDataHome).parent_path();
    if (platform == Platform::macos) return {parent / "Corvel", parent / "MacDevCorvel"};
    return {parent / "corvel", parent / "macdevcorvel"};
}

}  // namespace corvel
