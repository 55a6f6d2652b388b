#include "space/SpaceCatalog.h"

#include "common/CanonicalText.h"
#include "common/Text.h"
#include "space/SpaceCatalogTable.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace corvel {

using namespace SpaceCatalogTable;

namespace {
// Splits a path at "/" without allocating, skipping the empty pieces of "//" and of the ends.
struct Components {
    std::string_view rest;

    bool next(std::string_view& component) {
        while (!rest.empty() && rest.front() == '/') rest.remove_prefix(1);
        if (rest.empty()) return false;
        const auto slash = rest.find('/');
        component = rest.substr(0, slash);
        rest = slash == std::string_view::npos ? std::string_view{} : rest.substr(slash);
        return true;
    }

    // The next component, or empty when there is none (a component is never empty).
    std::string_view take() {
        std::string_view component;
        return next(component) ? component : std::string_view{};
    }
};

// Whether the components of `text`, joined with "/", start with `prefix`: a plain text prefix,
// so "opt/homebrew/var" also matches "opt/homebrew/variant".
bool joinedStartsWith(std::string_view text, std::string_view prefix) {
    Components components{text};
    std::string_view component;
    bool first = true;
    while (!prefix.empty()) {
        if (!components.next(component)) return false;
        if (!first) {
            if (prefix.front() != '/') return false;
            prefix.remove_prefix(1);
            if (prefix.empty()) return true;
        }
        first = false;
        const auto shared = std::min(component.size(), prefix.size());
        if (component.substr(0, shared) != prefix.substr(0, shared)) return false;
        prefix.remove_prefix(shared);
    }
    return true;
}

bool startsWithIgnoringASCIICase(std::string_view text, std::string_view lowerPrefix) {
    if (text.size() < lowerPrefix.size()) return false;
    for (std::size_t i = 0; i < lowerPrefix.size(); ++i) {
        char c = text[i];
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (c != lowerPrefix[i]) return false;
    }
    return true;
}

bool isDatabaseDirectory(std::string_view name) {
    return std::any_of(databaseDirectoryTable.begin(), databaseDirectoryTable.end(),
                       [&](std::string_view prefix) { return startsWithIgnoringASCIICase(name, prefix); });
}

// Literal names keep their length, so the tests compare sizes first and never count characters.
template <std::size_t... Sizes>
bool isAnyOf(std::string_view text, const char (&... names)[Sizes]) {
    return ((text == std::string_view(names, Sizes - 1)) || ...);
}

// The last component, or the whole path when it has none ("/", "").
std::string_view lastComponent(std::string_view path) {
    auto end = path.find_last_not_of('/');
    if (end == std::string_view::npos) return path;
    const auto slash = path.rfind('/', end);
    const auto start = slash == std::string_view::npos ? 0 : slash + 1;
    return path.substr(start, end + 1 - start);
}

}  // namespace

// The rule groups, tried by verdict() in a fixed order; each answers "no rule" with nullopt.
struct SpaceCatalogRules {
    const SpaceCatalog& catalog;
    std::string_view path;  // as passed in: owner ranges are offsets into it
    // joinedStartsWith, answered by a plain prefix test where that is certain: the text and its
    // joined components agree up to the first "//", and no tested prefix ends with "/".
    static bool startsWithJoined(std::string_view text, std::string_view prefix) {
        const auto start = text.find_first_not_of('/');
        if (start == std::string_view::npos) return prefix.empty();
        text.remove_prefix(start);
        if (prefix.empty() || text.starts_with(prefix)) return true;
        if (text.front() != prefix.front()) return false;
        if (text.substr(0, prefix.size()).find("//") == std::string_view::npos) return false;
        return joinedStartsWith(text, prefix);
    }

    SpaceVerdict make(std::uint16_t rule, std::string_view owner = {}) const {
        const auto& classification = catalog.rules_[rule];
        SpaceVerdict verdict{rule, classification.category, classification.risk, 0, 0};
        if (!owner.empty()) {
            // Owners are always views into `path`; far-off offsets cannot occur in real paths.
            const auto offset = static_cast<std::size_t>(owner.data() - path.data());
            constexpr auto limit = std::numeric_limits<std::uint32_t>::max();
            if (offset <= limit && owner.size() <= limit) {
                verdict.applicationOffset = static_cast<std::uint32_t>(offset);
                verdict.applicationLength = static_cast<std::uint32_t>(owner.size());
            }
        }
        return verdict;
    }
    SpaceVerdict make(Rule rule, std::string_view owner = {}) const { return make(index(rule), owner); }

    static std::optional<Rule> classifyByName(std::string_view name, bool isDirectory) {
        if (!isDirectory) return std::nullopt;
        if (name == "node_modules") return Rule::nodeModules;
        if (isAnyOf(name, ".venv", "venv")) return Rule::virtualEnvironment;
        if (isAnyOf(name, "DerivedData", ".build")) return Rule::buildOutput;
        if (isAnyOf(name, ".next", ".nuxt", ".turbo", ".parcel-cache")) return Rule::frameworkBuildCache;
        if (isAnyOf(name, "__pycache__", ".pytest_cache", ".mypy_cache")) return Rule::pythonCache;
        if (name == ".git") return Rule::gitRepository;
        return std::nullopt;
    }

    std::optional<SpaceVerdict> classifyHome(std::string_view relative) const {
        Components components{relative};
        const auto first = components.take();
        if (first.empty()) return make(Rule::homeFolder);
        if (first == ".Trash") return make(Rule::homeTrash);
        if (isAnyOf(first, ".ssh", ".gnupg", ".aws", ".kube", ".docker")) return make(Rule::homeCredentials);
        if (isAnyOf(first, "Documents", "Desktop", "Pictures", "Movies", "Music")) return make(Rule::homePersonal);
        if (first == "Downloads") return make(Rule::homeDownloads);
        if (first == ".npm") return make(Rule::homeNpm);
        if (first == "Library") return classifyLibrary(components);
        if (isAnyOf(first, ".rustup", ".nvm", ".pyenv", ".sdkman")) return make(Rule::homeToolchains, first);
        if (first == ".m2") return make(Rule::homeMaven);

        const auto second = components.take();
        if (first == ".gradle" && second == "caches") return make(Rule::homeGradleCaches);
        if (first == ".cargo" && second == "registry") return make(Rule::homeCargoRegistry);
        if (second.empty() && isAnyOf(first, "projects", "Developer", "etl", "src", "code", "workspace"))
            return make(Rule::homeProjectDirectory);
        return std::nullopt;
    }

    // `components` is positioned after the home folder's "Library".
    std::optional<SpaceVerdict> classifyLibrary(Components components) const {
        const auto first = components.take();
        if (first.empty()) return make(Rule::libraryFolder);
        if (first == "Developer") return classifyDeveloper(components.rest);
        const auto second = components.take();
        if (first == "Caches") {
            if (second.empty()) return make(Rule::libraryCachesFolder);
            if (second == "com.apple.dt.Xcode") return make(Rule::libraryXcodeCache);
            if (second == "Homebrew") return make(Rule::libraryHomebrewCache);
            return make(Rule::libraryAppCache, SpaceCatalog::appName(second));
        }
        if (first == "Logs") return make(Rule::libraryLogs, SpaceCatalog::appName(second));
        if (first == "Containers") {
            if (second == "com.docker.docker") return make(Rule::libraryDockerDesktop);
            return make(Rule::libraryContainers, SpaceCatalog::appName(second));
        }
        if (first == "Group Containers") {
            for (const auto& known : knownGroupContainerTable)
                if (second == known.name) return make(known.rule);
            return make(Rule::libraryGroupContainers, SpaceCatalog::appName(second));
        }
        if (first == "Application Support") return make(Rule::libraryApplicationSupport, SpaceCatalog::appName(second));
        if (first == "Keychains") return make(Rule::libraryKeychains);
        if (isAnyOf(first, "Mail", "Messages", "Photos", "Mobile Documents", "CloudStorage"))
            return make(Rule::libraryPersonal, first);
        return make(Rule::libraryOther, first);
    }

    // `rest` is what follows the home folder's "Library/Developer".
    std::optional<SpaceVerdict> classifyDeveloper(std::string_view rest) const {
        if (startsWithJoined(rest, "Xcode/DerivedData")) return make(Rule::developerDerivedData);
        if (startsWithJoined(rest, "Xcode/Archives")) return make(Rule::developerArchives);
        if (startsWithJoined(rest, "Xcode/iOS DeviceSupport") || startsWithJoined(rest, "Xcode/watchOS DeviceSupport"))
            return make(Rule::developerDeviceSupport);
        if (startsWithJoined(rest, "CoreSimulator")) return make(Rule::developerCoreSimulator);
        return make(Rule::developerOther);
    }

    std::optional<SpaceVerdict> classifySystem(std::string_view normalised) const {
        // The data volume seen through its mount point is the same data as at the root.
        std::string_view text = normalised;
        {
            Components probe{normalised};
            if (probe.take() == "System" && probe.take() == "Volumes" && probe.take() == "Data") text = probe.rest;
        }
        Components components{text};
        const auto first = components.take();
        if (first.empty()) return std::nullopt;

        if (startsWithJoined(text, "opt/homebrew/var") || startsWithJoined(text, "usr/local/var")) {
            Components all{text};
            std::string_view component;
            while (all.next(component))
                if (isDatabaseDirectory(component)) return make(Rule::systemHomebrewDatabase);
        }
        if (catalog.platform_ == Platform::linux)
            if (auto verdict = classifyLinuxSystem(text)) return verdict;

        const auto second = components.take();
        if (first == "Applications") return make(Rule::systemApplications, second);
        if (first == "opt" &&
            (startsWithJoined(text, "opt/homebrew/Cellar") || startsWithJoined(text, "opt/homebrew/Caskroom")))
            return make(Rule::systemHomebrewCellar);
        if (first == "opt" || first == "usr") return make(Rule::systemPackagePrefix);
        if (first == "private") {
            if (startsWithJoined(text, "private/tmp")) return make(Rule::systemPrivateTmp);
            // The name holds no "/", so it lies inside one component whether or not "//" occurs.
            if (text.find("com.google.Chrome.code_sign_clone") != std::string_view::npos)
                return make(Rule::systemChromeClones);
            if (startsWithJoined(text, "private/var/vm")) return make(Rule::systemSwap);
            if (startsWithJoined(text, "private/var/folders")) return make(Rule::systemVarFolders);
            return make(Rule::systemPrivate);
        }
        if (first == "System") return make(Rule::systemSystem);
        if (first == "Library") {
            if (startsWithJoined(text, "Library/Developer/CoreSimulator")) return make(Rule::systemSimulatorRuntimes);
            return make(Rule::systemLibrary);
        }
        return std::nullopt;
    }

    std::optional<SpaceVerdict> classifyLinuxHome(std::string_view relative) const {
        Components components{relative};
        const auto first = components.take();
        const auto second = components.take();
        const auto third = components.take();
        if (first == ".cache") {
            if (second.empty()) return make(Rule::linuxCacheFolder);
            if (second == "pip") return make(Rule::linuxPipCache);
            if (second == "uv") return make(Rule::linuxUvCache);
            if (second == "yarn") return make(Rule::linuxYarnCache);
            if (second == "go-build") return make(Rule::linuxGoBuildCache);
            if (second == "ccache") return make(Rule::linuxCompilerCache);
            if (second == "bazel") return make(Rule::linuxBazelCache);
            if (second == "huggingface") return make(Rule::linuxHuggingFaceCache);
            return make(Rule::linuxAppCache, SpaceCatalog::appName(second));
        }
        if (first == ".local" && second == "share") {
            if (third == "Trash") return make(Rule::linuxTrash);
            if (third == "containers") return make(Rule::linuxPodmanUser);
            if (third == "docker") return make(Rule::linuxDockerRootless);
        }
        if (first == "go" && second == "pkg" && third == "mod") return make(Rule::linuxGoModules);
        // The XDG name of the folder macOS calls Movies.
        if (first == "Videos") return make(Rule::homePersonal);
        return std::nullopt;
    }

    // `text` is the path below the root, the macOS firmlink already removed.
    std::optional<SpaceVerdict> classifyLinuxSystem(std::string_view text) const {
        Components components{text};
        const auto first = components.take();
        const auto second = components.take();
        const auto third = components.take();
        if (first == "var") {
            if (second == "lib") {
                if (third == "docker") return make(Rule::linuxDockerEngine);
                if (third == "containerd") return make(Rule::linuxContainerd);
                if (third == "containers") return make(Rule::linuxPodmanSystem);
                if (!third.empty() && isDatabaseDirectory(third)) return make(Rule::linuxDatabase);
            }
            if (second == "tmp") return make(Rule::linuxVarTmp);
            if (second == "cache" && third == "apt") return make(Rule::linuxAptCache);
            return std::nullopt;
        }
        if (first == "tmp") return make(Rule::linuxTmp);
        if (first == "usr") return make(second == "local" ? Rule::linuxUsrLocal : Rule::linuxUsr);
        // /opt/homebrew keeps its Homebrew verdicts.
        if (first == "opt" && second != "homebrew") return make(Rule::linuxOpt, second);
        return std::nullopt;
    }
};

SpaceCatalog::SpaceCatalog(std::string home, std::vector<std::string> projectRoots, Platform platform)
    : home_(composedText(home)), projectRoots_(std::move(projectRoots)), platform_(platform) {
    if (!home_.empty() && home_.back() == '/') home_.pop_back();
    for (auto& root : projectRoots_) root = composedText(root);
    homePrefix_ = home_ + "/";

    const auto& fixed = fixedRules();
    if (fixed.size() + projectRoots_.size() > std::numeric_limits<std::uint16_t>::max())
        throw std::length_error("SpaceCatalog: too many project roots (" + std::to_string(projectRoots_.size()) + ")");
    rules_.reserve(fixed.size() + projectRoots_.size());
    for (const auto& entry : fixed) rules_.push_back(entry.classification);
    for (const auto& root : projectRoots_) {
        rootPrefixes_.push_back(root + "/");
        rules_.push_back({SpaceCategory::projects, CleanupRisk::red, std::nullopt,
                          "Project source under " + root + ". Never removed based on size.",
                          "Use the Migration Center to verify the SSD copy before freeing internal space."});
    }
}

SpaceVerdict SpaceCatalog::verdict(std::string_view path, bool isDirectory) const {
    // Home and project roots are held composed (NFC); a path with any non-ASCII byte is composed
    // too, so that a decomposed "é" still matches. ASCII paths, nearly all of them, skip this.
    if (isASCII(path)) return composedVerdict(path, isDirectory);
    const std::string composed = composedText(path);
    return composedVerdict(composed, isDirectory);
}

SpaceVerdict SpaceCatalog::composedVerdict(std::string_view path, bool isDirectory) const {
    const SpaceCatalogRules rules{*this, path};

    std::string_view normalised = path;
    constexpr std::string_view firmlink = "/System/Volumes/Data/";
    if (normalised.starts_with(firmlink)) normalised.remove_prefix(firmlink.size() - 1);
    // Name rules apply to folders only, so files skip finding the name.
    const auto name = isDirectory ? lastComponent(normalised) : std::string_view{};

    for (std::size_t i = 0; i < projectRoots_.size(); ++i) {
        if (normalised != projectRoots_[i] && !normalised.starts_with(rootPrefixes_[i])) continue;
        // Dependency and build folders inside a project keep their reviewable verdict; anything
        // else there, even a cache or the repository, is project source.
        const auto byName = SpaceCatalogRules::classifyByName(name, isDirectory);
        if (byName && rules_[index(*byName)].risk == CleanupRisk::yellow) return rules.make(*byName);
        return rules.make(static_cast<std::uint16_t>(index(Rule::count) + i));
    }

    const bool inHome = normalised == home_ || normalised.starts_with(homePrefix_);
    if (inHome) {
        const auto relative = normalised == home_ ? std::string_view{} : normalised.substr(homePrefix_.size());
        if (auto verdict = rules.classifyHome(relative)) return *verdict;
        if (platform_ == Platform::linux)
            if (auto verdict = rules.classifyLinuxHome(relative)) return *verdict;
    }
    if (auto verdict = rules.classifySystem(normalised)) return *verdict;
    if (const auto byName = SpaceCatalogRules::classifyByName(name, isDirectory)) return rules.make(*byName);
    return rules.make(Rule::unknown);
}

SpaceClassification SpaceCatalog::expand(const SpaceVerdict& verdict, std::string_view path) const {
    if (!isASCII(path)) return composedExpand(verdict, composedText(path));
    return composedExpand(verdict, path);
}

// Owner ranges are offsets into the composed path the verdict was made for.
SpaceClassification SpaceCatalog::composedExpand(const SpaceVerdict& verdict, std::string_view path) const {
    if (verdict.rule >= rules_.size()) return SpaceClassification::unknown();
    SpaceClassification classification = rules_[verdict.rule];
    const auto owner = verdict.rule < index(Rule::count) ? fixedRules()[verdict.rule].owner : Owner::fixed;
    if (owner == Owner::fixed || verdict.applicationLength == 0) return classification;
    // A path other than the one classified could be shorter; never read past it.
    if (verdict.applicationOffset > path.size() || verdict.applicationLength > path.size() - verdict.applicationOffset)
        return classification;
    const auto text = path.substr(verdict.applicationOffset, verdict.applicationLength);
    classification.application = owner == Owner::fromPathWithoutApp ? replaceAll(text, ".app", "") : std::string(text);
    return classification;
}

SpaceClassification SpaceCatalog::classify(std::string_view path, bool isDirectory) const {
    return expand(verdict(path, isDirectory), path);
}

std::string_view SpaceCatalog::appName(std::string_view text) {
    std::string_view first;
    std::string_view last;
    std::size_t pieces = 0;
    std::size_t start = 0;
    while (start <= text.size()) {
        auto dot = text.find('.', start);
        if (dot == std::string_view::npos) dot = text.size();
        if (dot > start) {
            const auto piece = text.substr(start, dot - start);
            if (pieces == 0) first = piece;
            last = piece;
            ++pieces;
        }
        start = dot + 1;
    }
    if (pieces >= 3 && isAnyOf(first, "com", "org", "net", "io", "dev", "app", "group")) return last;
    return text;
}

const std::array<std::string_view, 10>& SpaceCatalog::databaseDirectories() {
    return databaseDirectoryTable;
}

const std::unordered_map<std::string_view, SpaceCatalog::GroupContainer>& SpaceCatalog::knownGroupContainers() {
    static const std::unordered_map<std::string_view, GroupContainer> map = [] {
        std::unordered_map<std::string_view, GroupContainer> built;
        for (const auto& known : knownGroupContainerTable) built.emplace(known.name, known.facts);
        return built;
    }();
    return map;
}

}  // namespace corvel
