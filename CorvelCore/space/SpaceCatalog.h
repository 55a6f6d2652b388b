// The vocabulary of what a developer machine's storage holds. Given an absolute path and whether
// it is a folder, the catalogue says what kind of data it is, how risky removing it would be, who
// owns it and why. It never touches the file system: the verdict depends only on the path text,
// the home folder and the project roots, so it can be built and tested anywhere. Anything no rule
// positively recognises is gray and is never offered for cleanup.
//
// Build it once per scan and pass it by const reference; it precomputes what it can so that a
// call per node of a large scan stays cheap, and `verdict` does not allocate for ASCII paths.
// Paths compare by canonical equivalence: a decomposed "é" (e + combining accent, as older Mac
// file systems store names) matches a home or project root written composed, and the reverse.
//
//   const SpaceCatalog catalog("/Users/me", {"/Users/me/dev"});
//   catalog.classify("/Users/me/Library/Caches/com.apple.Safari", true);   // Caches, green, "Safari"
//   SpaceVerdict v = catalog.verdict(path, true);    // category and risk now, text later:
//   SpaceClassification full = catalog.expand(v, path);
//
// A catalogue built for Linux also knows the Linux homes of the same data (~/.cache,
// ~/.local/share/Trash, /var/lib/docker, /tmp, /usr, /opt, ...). Those rules are consulted only
// by a Linux catalogue, so a macOS catalogue's verdicts never depend on them.
#pragma once

#include "common/Platform.h"
#include "space/CleanupRisk.h"
#include "space/SpaceCategory.h"
#include "space/SpaceClassification.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace corvel {

// A verdict in twelve bytes: enough to total by category and risk for every node of a scan, and
// to rebuild the full SpaceClassification later with SpaceCatalog::expand and the same path.
struct SpaceVerdict {
    std::uint16_t rule = 0;  // which rule of the catalogue decided; only that catalogue can expand it
    SpaceCategory category = SpaceCategory::other;
    CleanupRisk risk = CleanupRisk::gray;
    // Where a rule names the owner after a path component ("com.apple.Safari" gives "Safari"),
    // the owner is this range of the classified path; both are zero otherwise.
    std::uint32_t applicationOffset = 0;
    std::uint32_t applicationLength = 0;

    bool operator==(const SpaceVerdict&) const = default;
};

class SpaceCatalog {
public:
    // Owner, risk and rationale of a known group-container folder.
    struct GroupContainer {
        std::string_view application;
        CleanupRisk risk;
        std::string_view rationale;
    };

    // One trailing "/" of `home` is removed. `projectRoots` are absolute folders; the first that
    // contains a path decides for it.
    explicit SpaceCatalog(std::string home, std::vector<std::string> projectRoots = {},
                          Platform platform = Platform::macos);

    const std::string& home() const { return home_; }
    const std::vector<std::string>& projectRoots() const { return projectRoots_; }
    Platform platform() const { return platform_; }

    // Total: at worst SpaceClassification::unknown(). Safe to call from any number of threads.
    SpaceClassification classify(std::string_view path, bool isDirectory) const;

    // The same decision as classify, without building any text.
    SpaceVerdict verdict(std::string_view path, bool isDirectory) const;

    // The classification a verdict of this catalogue stands for; `path` must be the path the
    // verdict was made for (the owner's name may be a part of it).
    SpaceClassification expand(const SpaceVerdict& verdict, std::string_view path) const;

    // "com.apple.Safari" -> "Safari"; "com.foo" and "Homebrew" stay as they are. The result is a
    // part of `text`.
    static std::string_view appName(std::string_view text);

    // Lower-case prefixes of folder names that hold a database server's data.
    static const std::array<std::string_view, 10>& databaseDirectories();

    // Group-container folders whose owner we know, by folder name.
    static const std::unordered_map<std::string_view, GroupContainer>& knownGroupContainers();

    bool operator==(const SpaceCatalog& other) const {
        return home_ == other.home_ && projectRoots_ == other.projectRoots_ && platform_ == other.platform_;
    }

private:
    friend struct SpaceCatalogRules;

    SpaceVerdict composedVerdict(std::string_view path, bool isDirectory) const;
    SpaceClassification composedExpand(const SpaceVerdict& verdict, std::string_view path) const;

    std::string home_;
    std::vector<std::string> projectRoots_;
    Platform platform_;
    std::string homePrefix_;                 // home_ + "/"
    std::vector<std::string> rootPrefixes_;  // each project root + "/"
    // The rule table: the fixed rules first, then one "project source" rule per project root,
    // whose rationale names the root.
    std::vector<SpaceClassification> rules_;
};

}  // namespace corvel
