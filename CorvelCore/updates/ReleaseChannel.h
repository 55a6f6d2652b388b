// Releases of Velmora's repository, read through the GitHub command-line program (`gh`) that the
// person installed and signed in to: Velmora has no network code of its own. The channel finds
// `gh`, asks for the newest release, describes it, and downloads its package with the published
// checksum, refusing a package that does not match.
//
//   auto channel = ReleaseChannel::locate(std::nullopt, runner, environment);   // absent: no gh
//   if (!channel) throw UpdateError::githubCLIMissing();
//   ReleaseInfo release = channel->latest();                                    // throws UpdateError
//   auto package = channel->withDownloadRunner(slowRunner).download(release, folder);
//
// The channel's policy allows `gh` exactly two commands: "release view" and "release download",
// each for this repository only.
#pragma once

#include "command/CommandError.h"
#include "command/CommandPolicy.h"
#include "common/Environment.h"
#include "common/Platform.h"
#include "updates/ReleaseInfo.h"
#include "updates/UpdateError.h"

#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvel {

class ReleaseChannel {
public:
    // Where Velmora's releases are published unless a setting or --repo names another.
    static constexpr std::string_view defaultRepository = "velmora-app/velmora";
    // Homebrew's two prefixes, tried before PATH: an app started from the Dock has no shell PATH.
    static constexpr std::array<std::string_view, 2> fixedLocations{"/opt/homebrew/bin/gh", "/usr/local/bin/gh"};
    static constexpr std::string_view viewFields = "tagName,name,body,publishedAt,url,assets";

    using IsExecutable = std::function<bool(const std::string&)>;
    static bool isExecutableFile(const std::string& path);

    // The first executable `gh` among the fixed locations and the folders of the environment's
    // PATH (relative PATH entries are skipped: they depend on where we happen to be started).
    static std::optional<std::string> findGitHubCLI(const Environment& environment,
                                                    const IsExecutable& isExecutable = isExecutableFile);

    // Absent when no `gh` is found. `repository` (OWNER/NAME) defaults to defaultRepository;
    // a malformed one throws UpdateError::failed naming it. The channel keeps `runner` by reference.
    static std::optional<ReleaseChannel> locate(const std::optional<std::string>& repository, CommandRunning& runner,
                                                const Environment& environment,
                                                const IsExecutable& isExecutable = isExecutableFile);

    // Which platform's package to pick (default: this one's).
    ReleaseChannel& forPlatform(Platform platform);
    // Downloads can take far longer than a query; give them a runner with a longer time-out.
    ReleaseChannel& withDownloadRunner(CommandRunning& runner);

    // A new, empty folder under the system's temporary folder for one download. Throws UpdateError.
    static std::filesystem::path freshDownloadFolder();

    const CommandPolicy& policy() const { return policy_; }
    const std::string& repository() const { return repository_; }
    Platform platform() const { return platform_; }

    // The newest published release. Throws UpdateError (notSignedIn, noRelease, failed).
    ReleaseInfo latest() const;

    // `gh release view --json` output as a ReleaseInfo; missing or wrongly typed keys read as
    // empty or absent. Output that is not one JSON object throws UpdateError::failed.
    static ReleaseInfo parse(std::string_view bytes, Platform platform = Platform::macos);

    // How a failed `gh` run reads to a person: signed out, no release, or its own message.
    static UpdateError classify(const CommandError& error);

    // Fetches the package and its checksum file into `folder` (made when missing, same-named
    // files replaced) and returns the package's path once its SHA-256 matches the published one.
    // Throws missingAsset without a package, checksumMismatch when the digest differs or none was
    // published (the mismatching package is removed), failed for anything else.
    std::filesystem::path download(const ReleaseInfo& info, const std::filesystem::path& folder) const;

private:
    ReleaseChannel(std::string executable, std::string repository, CommandRunning& runner);

    std::string run(const std::vector<std::string>& arguments, CommandRunning& runner) const;
    void fetch(const ReleaseInfo& info, const std::string& asset, const std::filesystem::path& folder) const;

    CommandPolicy policy_;
    CommandRunning* runner_;
    CommandRunning* downloadRunner_;
    std::string repository_;
    Platform platform_;
};

}  // namespace corvel
