// Everything Velmora may keep for one person, by platform: the data folder, settings outside it,
// the background agent's registration, caches, and the data folders of earlier versions (which
// were called Corvel and MacDevCorvel). Pure: the file system is never asked here.
//
//   auto locations = VelmoraLocations::forThisUser(environment, machine.dataFolder());
//   for (const auto& kept : locations.outsideDataFolder()) ...   // settings, agent files, caches
//   locations.legacyDataFolders();   // ~/.local/share/corvel, ~/.local/share/macdevcorvel
#pragma once

#include "common/EnumTable.h"
#include "common/Environment.h"
#include "common/Platform.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

enum class KeptKind { dataFile, settings, agentRegistration, cache, legacyData };

template <>
struct EnumTable<KeptKind> {
    static constexpr std::array<EnumEntry<KeptKind>, 5> entries{{
        {KeptKind::dataFile, "dataFile", "data"},
        {KeptKind::settings, "settings", "settings"},
        {KeptKind::agentRegistration, "agentRegistration", "agent"},
        {KeptKind::cache, "cache", "cache"},
        {KeptKind::legacyData, "legacyData", "earlier data"},
    }};
};
CORVEL_ENUM_JSON(KeptKind)

struct KeptLocation {
    std::filesystem::path path;
    KeptKind kind = KeptKind::dataFile;

    bool operator==(const KeptLocation&) const = default;
};

struct VelmoraLocations {
    // The application's identifier: the agent's launch description is named after it.
    static constexpr std::string_view applicationID = "app.velmora.Velmora";

    Platform platform = Platform::linux;
    std::filesystem::path home;
    std::filesystem::path dataFolder;
    // The platform's support folder rather than one named by --data-dir or VELMORA_DATA_DIR. Only
    // then is every file in it ours, and only then is earlier data moved into it.
    bool dataFolderIsDefault = true;
    std::optional<std::string> xdgDataHome;
    std::optional<std::string> xdgConfigHome;
    std::optional<std::string> xdgCacheHome;

    // This user on this platform, with the data folder the machine uses.
    static VelmoraLocations forThisUser(const Environment& environment, const std::filesystem::path& dataFolder);

    // The files Velmora writes into its data folder (also when the folder is one a person named).
    static const std::vector<std::string>& dataFileNames();
    // One of those, or the temporary file of an interrupted atomic write of one (".name.XXXXXX").
    static bool isDataFileName(std::string_view name);
    static KeptKind kindOfDataFile(std::string_view name);

    // Settings, agent registration and caches outside the data folder, whether they exist or not.
    std::vector<KeptLocation> outsideDataFolder() const;

    // The data folders of earlier versions, beside the default data folder.
    std::vector<std::filesystem::path> legacyDataFolders() const;
};

}  // namespace corvel
