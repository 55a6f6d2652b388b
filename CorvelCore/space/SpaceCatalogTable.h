// The catalogue's fixed table: every rule it can decide, what each rule says (category, risk,
// owner, rationale, hint), and the known folder names it matches. Kept apart from the matching in
// SpaceCatalog.cpp so that the decisions read as a table; only the catalogue includes this.
//
//   const auto& entry = SpaceCatalogTable::fixedRules()[index(Rule::homeTrash)];
//   entry.classification.risk == CleanupRisk::yellow
#pragma once

#include "space/SpaceCatalog.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace corvel::SpaceCatalogTable {

// Every fixed verdict the catalogue can give. A verdict stores the rule's number, so this list and
// the table built in fixedRules() must stay in the same order.
enum class Rule : std::uint16_t {
    unknown,
    // Folder names, wherever they lie.
    nodeModules,
    virtualEnvironment,
    buildOutput,
    frameworkBuildCache,
    pythonCache,
    gitRepository,
    // The home folder.
    homeFolder,
    homeTrash,
    homeCredentials,
    homePersonal,
    homeDownloads,
    homeNpm,
    homeGradleCaches,
    homeMaven,
    homeCargoRegistry,
    homeToolchains,
    homeProjectDirectory,
    // The home folder's Library.
    libraryFolder,
    libraryCachesFolder,
    libraryXcodeCache,
    libraryHomebrewCache,
    libraryAppCache,
    libraryLogs,
    libraryDockerDesktop,
    libraryContainers,
    libraryWhatsAppGroup,
    libraryDockerGroup,
    libraryOfficeGroup,
    libraryGroupContainers,
    libraryApplicationSupport,
    libraryKeychains,
    libraryPersonal,
    libraryOther,
    // The home folder's Library/Developer.
    developerDerivedData,
    developerArchives,
    developerDeviceSupport,
    developerCoreSimulator,
    developerOther,
    // Outside the home folder.
    systemHomebrewDatabase,
    systemApplications,
    systemHomebrewCellar,
    systemPackagePrefix,
    systemPrivateTmp,
    systemChromeClones,
    systemSwap,
    systemVarFolders,
    systemPrivate,
    systemSystem,
    systemSimulatorRuntimes,
    systemLibrary,
    // Linux homes of the same kinds of data.
    linuxCacheFolder,
    linuxAppCache,
    linuxPipCache,
    linuxUvCache,
    linuxYarnCache,
    linuxGoBuildCache,
    linuxCompilerCache,
    linuxBazelCache,
    linuxHuggingFaceCache,
    linuxTrash,
    linuxPodmanUser,
    linuxDockerRootless,
    linuxGoModules,
    linuxDockerEngine,
    linuxContainerd,
    linuxPodmanSystem,
    linuxDatabase,
    linuxTmp,
    linuxVarTmp,
    linuxAptCache,
    linuxUsrLocal,
    linuxUsr,
    linuxOpt,
    count,
};

constexpr std::uint16_t index(Rule rule) {
    return static_cast<std::uint16_t>(rule);
}

// Where a verdict's owner comes from.
enum class Owner : std::uint8_t {
    fixed,               // the rule's own application (or none)
    fromPath,            // a part of the path, already the final name
    fromPathWithoutApp,  // a path component with every ".app" removed ("Xcode.app" -> "Xcode")
};

struct RuleEntry {
    SpaceClassification classification;
    Owner owner = Owner::fixed;
};

struct KnownGroupContainer {
    std::string_view name;
    Rule rule;
    SpaceCatalog::GroupContainer facts;
};

inline constexpr std::array<KnownGroupContainer, 3> knownGroupContainerTable{{
    {"group.net.whatsapp.WhatsApp.shared",
     Rule::libraryWhatsAppGroup,
     {"WhatsApp", CleanupRisk::red,
      "Chat media and message database. Manage it in WhatsApp \u203A Settings \u203A Storage and Data."}},
    {"group.com.docker",
     Rule::libraryDockerGroup,
     {"Docker Desktop", CleanupRisk::red, "Docker Desktop shared settings and sockets."}},
    {"UBF8T346G9.Office", Rule::libraryOfficeGroup, {"Microsoft Office", CleanupRisk::gray, "Office shared data."}},
}};

inline constexpr std::array<std::string_view, 10> databaseDirectoryTable{
    "postgresql", "postgres",      "mysql",      "mariadb",  "mongodb",
    "redis",      "elasticsearch", "clickhouse", "influxdb", "couchdb",
};

// The verdict of every fixed rule, indexed by Rule.
const std::vector<RuleEntry>& fixedRules();

}  // namespace corvel::SpaceCatalogTable
