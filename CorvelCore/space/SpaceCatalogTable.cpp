#include "space/SpaceCatalogTable.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace corvel::SpaceCatalogTable {
namespace {

constexpr std::string_view appCacheRationale =
    "Application cache. Apps rebuild caches when needed; quit the app before cleaning.";
constexpr std::string_view trashRationale = "Items you already moved to the Trash. Emptying it is irreversible.";
constexpr std::string_view toolchainRationale = "Installed toolchains that projects may depend on.";
constexpr std::string_view packageCacheRationale = "Package download cache.";
constexpr std::string_view dockerToolsHint =
    "Use the Docker Storage Center; reclaim space only with Docker's own tools.";
constexpr std::string_view unknownTemporaryRationale = "Temporary working files of unknown owner; may be in use.";
constexpr std::string_view installedAppRationale =
    "Installed application. Uninstall unused apps with their uninstaller.";

}  // namespace

const std::vector<RuleEntry>& fixedRules() {
    static const std::vector<RuleEntry> table = [] {
        std::vector<RuleEntry> rules(index(Rule::count));
        std::vector<bool> defined(index(Rule::count), false);
        auto define = [&](Rule rule, SpaceCategory category, CleanupRisk risk,
                          std::optional<std::string_view> application, std::string_view rationale,
                          std::optional<std::string_view> hint = std::nullopt, Owner owner = Owner::fixed) {
            auto& entry = rules[index(rule)];
            entry.classification.category = category;
            entry.classification.risk = risk;
            if (application) entry.classification.application = std::string(*application);
            entry.classification.rationale = std::string(rationale);
            if (hint) entry.classification.hint = std::string(*hint);
            entry.owner = owner;
            defined[index(rule)] = true;
        };
        using C = SpaceCategory;
        using R = CleanupRisk;
        const auto none = std::nullopt;
        const auto fromPath = Owner::fromPath;

        rules[index(Rule::unknown)].classification = SpaceClassification::unknown();
        defined[index(Rule::unknown)] = true;

        define(Rule::nodeModules, C::nodeModules, R::yellow, "npm / yarn / pnpm",
               "Installed dependencies; reinstalled from the lockfile.", "npm ci / pnpm install");
        define(Rule::virtualEnvironment, C::virtualEnvs, R::yellow, "Python",
               "Virtual environment; recreated from requirements.");
        define(Rule::buildOutput, C::builds, R::yellow, none, "Build output.");
        define(Rule::frameworkBuildCache, C::builds, R::yellow, "JavaScript tooling", "Framework build cache.");
        define(Rule::pythonCache, C::caches, R::green, "Python", "Bytecode/test cache.");
        define(Rule::gitRepository, C::projects, R::red, "git", "Repository history.");

        define(Rule::homeFolder, C::userData, R::red, none, "Home folder.");
        define(Rule::homeTrash, C::trash, R::yellow, "Finder", trashRationale,
               "Review the Trash in Finder and empty it there if nothing is needed.");
        define(Rule::homeCredentials, C::credentials, R::red, none, "Credentials and keys.");
        define(Rule::homePersonal, C::userData, R::red, none,
               "Personal files. Not removed without a confirmed backup.");
        define(Rule::homeDownloads, C::downloads, R::gray, none, "Downloaded files of unknown importance.",
               "Review in Finder sorted by size.");
        define(Rule::homeNpm, C::packageManagers, R::green, "npm", packageCacheRationale, "npm cache clean --force");
        define(Rule::homeGradleCaches, C::packageManagers, R::green, "Gradle",
               "Dependency cache, re-downloaded on demand.");
        define(Rule::homeMaven, C::packageManagers, R::yellow, "Maven",
               "Local artifact repository; may contain locally installed artifacts.");
        define(Rule::homeCargoRegistry, C::packageManagers, R::green, "Cargo", "Crate download cache.");
        define(Rule::homeToolchains, C::packageManagers, R::yellow, none, toolchainRationale, none, fromPath);
        define(Rule::homeProjectDirectory, C::projects, R::red, none, "Project directory.");

        define(Rule::libraryFolder, C::appData, R::gray, none, "User Library.");
        define(Rule::libraryCachesFolder, C::caches, R::yellow, none, appCacheRationale);
        define(Rule::libraryXcodeCache, C::xcode, R::green, "Xcode", "Xcode cache, rebuilt automatically.");
        define(Rule::libraryHomebrewCache, C::caches, R::green, "Homebrew", appCacheRationale, "brew cleanup");
        define(Rule::libraryAppCache, C::caches, R::green, none, appCacheRationale, none, fromPath);
        define(Rule::libraryLogs, C::logs, R::green, none, "Diagnostic logs.", none, fromPath);
        define(Rule::libraryDockerDesktop, C::docker, R::red, "Docker Desktop",
               "Docker Desktop VM disk image with images, containers and named volumes.", dockerToolsHint);
        define(Rule::libraryContainers, C::appData, R::gray, none, "Sandboxed app data. Impact of removal is unknown.",
               none, fromPath);
        for (const auto& known : knownGroupContainerTable)
            define(known.rule, C::appData, known.facts.risk, known.facts.application, known.facts.rationale);
        define(Rule::libraryGroupContainers, C::appData, R::gray, none, "Data shared between apps of one vendor.", none,
               fromPath);
        define(Rule::libraryApplicationSupport, C::appData, R::gray, none,
               "Application data. Impact of removal is unknown.", none, fromPath);
        define(Rule::libraryKeychains, C::credentials, R::red, "Keychain", "Passwords and certificates.");
        define(Rule::libraryPersonal, C::userData, R::red, none, "Personal data.", none, fromPath);
        define(Rule::libraryOther, C::appData, R::gray, none, "User Library data.", none, fromPath);

        define(Rule::developerDerivedData, C::builds, R::yellow, "Xcode",
               "Build intermediates; Xcode rebuilds them (first build afterwards is slower).");
        define(Rule::developerArchives, C::xcode, R::yellow, "Xcode",
               "Archives and dSYMs needed to symbolicate crashes of shipped builds.");
        define(Rule::developerDeviceSupport, C::xcode, R::yellow, "Xcode",
               "Debug symbols per OS version; re-downloaded when a device connects.");
        define(Rule::developerCoreSimulator, C::simulators, R::yellow, "Simulator",
               "Simulator devices and caches; may contain app data under test.", "xcrun simctl delete unavailable");
        define(Rule::developerOther, C::xcode, R::gray, "Xcode", "Developer tool data.");

        define(Rule::systemHomebrewDatabase, C::databases, R::red, "Homebrew service",
               "Database data directory managed by a Homebrew service.",
               "Inspect with the database's own tools (e.g. psql \\l+). Never delete the data directory.");
        define(Rule::systemApplications, C::applications, R::gray, none, installedAppRationale, none,
               Owner::fromPathWithoutApp);
        define(Rule::systemHomebrewCellar, C::packageManagers, R::yellow, "Homebrew", "Installed formulae and casks.",
               "brew cleanup, brew autoremove");
        define(Rule::systemPackagePrefix, C::packageManagers, R::gray, "Homebrew", "Package manager prefix.");
        define(Rule::systemPrivateTmp, C::temporary, R::gray, none, unknownTemporaryRationale,
               "macOS clears /private/tmp at restart. Check for running processes first.");
        define(Rule::systemChromeClones, C::temporary, R::yellow, "Google Chrome",
               "APFS clones Chrome creates for code-signing checks. They share blocks with Chrome, so removing "
               "them frees little.",
               "Quit and relaunch Chrome; it prunes old clones.");
        define(Rule::systemSwap, C::system, R::red, "macOS", "Swap and sleep image, managed by macOS.");
        define(Rule::systemVarFolders, C::system, R::gray, "macOS",
               "Per-user temporary and cache folders managed by macOS.");
        define(Rule::systemPrivate, C::system, R::red, "macOS", "System data.");
        define(Rule::systemSystem, C::system, R::red, "macOS", "System data.");
        define(Rule::systemSimulatorRuntimes, C::simulators, R::yellow, "Xcode", "Simulator runtimes.",
               "Manage runtimes in Xcode \u203A Settings \u203A Components.");
        define(Rule::systemLibrary, C::system, R::gray, none, "Shared system Library.");

        define(Rule::linuxCacheFolder, C::caches, R::yellow, none, appCacheRationale);
        define(Rule::linuxAppCache, C::caches, R::green, none, appCacheRationale, none, fromPath);
        define(Rule::linuxPipCache, C::packageManagers, R::green, "pip", packageCacheRationale, "pip cache purge");
        define(Rule::linuxUvCache, C::packageManagers, R::green, "uv", packageCacheRationale, "uv cache clean");
        define(Rule::linuxYarnCache, C::packageManagers, R::green, "Yarn", packageCacheRationale, "yarn cache clean");
        define(Rule::linuxGoBuildCache, C::caches, R::green, "Go", "Build cache, rebuilt on demand.",
               "go clean -cache");
        define(Rule::linuxCompilerCache, C::caches, R::green, "ccache", "Compiler cache, rebuilt on demand.",
               "ccache --clear");
        define(Rule::linuxBazelCache, C::builds, R::yellow, "Bazel",
               "Build outputs and caches of Bazel workspaces; the next build is slow without them.");
        define(Rule::linuxHuggingFaceCache, C::caches, R::yellow, "Hugging Face",
               "Downloaded models and datasets; fetched again on demand, which can take long.",
               "huggingface-cli delete-cache");
        define(Rule::linuxTrash, C::trash, R::yellow, "File manager", trashRationale,
               "Review the Trash in your file manager and empty it there if nothing is needed.");
        define(Rule::linuxPodmanUser, C::docker, R::red, "Podman", "Podman images, containers and named volumes.",
               "Reclaim space only with Podman's own tools (podman system df).");
        define(Rule::linuxDockerRootless, C::docker, R::red, "Docker",
               "Rootless Docker's images, containers and named volumes.", dockerToolsHint);
        define(Rule::linuxGoModules, C::packageManagers, R::green, "Go", "Module download cache.",
               "go clean -modcache");
        define(Rule::linuxDockerEngine, C::docker, R::red, "Docker Engine",
               "Docker Engine's images, containers and named volumes.", dockerToolsHint);
        define(Rule::linuxContainerd, C::docker, R::red, "containerd",
               "Container images and snapshots managed by containerd.", dockerToolsHint);
        define(Rule::linuxPodmanSystem, C::docker, R::red, "Podman", "Podman images, containers and named volumes.",
               "Reclaim space only with Podman's own tools (podman system df).");
        define(Rule::linuxDatabase, C::databases, R::red, "System service",
               "Database data directory managed by a system service.",
               "Inspect with the database's own tools (e.g. psql \\l+). Never delete the data directory.");
        define(Rule::linuxTmp, C::temporary, R::gray, none, unknownTemporaryRationale,
               "Most systems clear /tmp at restart. Check for running processes first.");
        define(Rule::linuxVarTmp, C::temporary, R::gray, none,
               "Temporary files kept across restarts, of unknown owner; may be in use.");
        define(Rule::linuxAptCache, C::packageManagers, R::green, "APT",
               "Downloaded package files, fetched again when needed.", "sudo apt-get clean");
        define(Rule::linuxUsrLocal, C::applications, R::gray, none, "Software installed outside the package manager.");
        define(Rule::linuxUsr, C::system, R::red, "Linux", "Operating system files, managed by the package manager.");
        define(Rule::linuxOpt, C::applications, R::gray, none, installedAppRationale, none, fromPath);

        // A rule added to the list above but not to this table would classify silently wrong.
        if (std::find(defined.begin(), defined.end(), false) != defined.end())
            throw std::logic_error("SpaceCatalog: a rule has no verdict");
        return rules;
    }();
    return table;
}

}  // namespace corvel::SpaceCatalogTable
