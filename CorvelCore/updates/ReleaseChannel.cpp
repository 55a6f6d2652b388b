#include "updates/ReleaseChannel.h"

#include "common/AtomicFile.h"
#include "common/PathText.h"
#include "common/RepositoryName.h"
#include "common/Text.h"
#include "updates/ChecksumFile.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <regex>

namespace corvel {
namespace {

// Which asset is the installer package on each platform, in order of preference. On macOS it is
// the .pkg with the ".pkg.sha256" file beside it; on Linux, where a .pkg means nothing, a Linux
// tarball or a Debian package, with the checksum file named after it.
struct AssetRule {
    Platform platform;
    std::string_view suffix;
    std::string_view mustContain;     // lower case; empty: any name
    std::string_view checksumSuffix;  // empty: the package's own name + ".sha256"
};

constexpr std::array<AssetRule, 3> assetRules{{
    {Platform::macos, ".pkg", "", ".pkg.sha256"},
    {Platform::linux, ".tar.gz", "linux", ""},
    {Platform::linux, ".deb", "", ""},
}};

constexpr std::size_t checksumReadLimit = 64 * 1024;

std::string textOr(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) return {};
    return found->get<std::string>();
}

std::vector<std::string> assetNames(const Json& object) {
    std::vector<std::string> names;
    const auto found = object.find("assets");
    if (found == object.end() || !found->is_array()) return names;
    for (const auto& asset : *found)
        if (asset.is_object()) {
            if (auto name = textOr(asset, "name"); !name.empty()) names.push_back(std::move(name));
        }
    return names;
}

std::optional<std::string> buildNumber(const std::string& notes) {
    static const std::regex pattern(R"(Build:?\s*(\d{6,}))");
    std::smatch match;
    if (!std::regex_search(notes, match, pattern)) return std::nullopt;
    return match[1].str();
}

void pickAssets(const std::vector<std::string>& names, Platform platform, ReleaseInfo& info) {
    for (const auto& rule : assetRules) {
        if (rule.platform != platform) continue;
        for (const auto& name : names) {
            if (!endsWith(name, rule.suffix) || !contains(toLower(name), rule.mustContain)) continue;
            info.packageAsset = name;
            for (const auto& other : names) {
                const bool matches =
                    rule.checksumSuffix.empty() ? other == name + ".sha256" : endsWith(other, rule.checksumSuffix);
                if (matches) {
                    info.checksumAsset = other;
                    break;
                }
            }
            return;
        }
    }
}

// gh reads --pattern as a glob; a name with glob characters could fetch other assets.
bool isPlainName(const std::string& name) {
    return name.find_first_of("*?[]\\/") == std::string::npos && name != "." && name != "..";
}

}  // namespace

bool ReleaseChannel::isExecutableFile(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

std::optional<std::string> ReleaseChannel::findGitHubCLI(const Environment& environment,
                                                         const IsExecutable& isExecutable) {
    std::vector<std::string> candidates(fixedLocations.begin(), fixedLocations.end());
    if (const auto path = lookup(environment, "PATH"))
        for (const auto& folder : split(*path, ':'))
            if (!folder.empty() && folder.front() == '/') candidates.push_back(joinPath(folder, "gh"));
    for (const auto& candidate : candidates)
        if (isExecutable(candidate)) return candidate;
    return std::nullopt;
}

std::optional<ReleaseChannel> ReleaseChannel::locate(const std::optional<std::string>& repository,
                                                     CommandRunning& runner, const Environment& environment,
                                                     const IsExecutable& isExecutable) {
    const std::string name = repository ? *repository : std::string(defaultRepository);
    if (!RepositoryName::isValid(name))
        throw UpdateError::failed("'" + name + "' is not a GitHub repository name (OWNER/NAME)");
    auto executable = findGitHubCLI(environment, isExecutable);
    if (!executable) return std::nullopt;
    return ReleaseChannel(std::move(*executable), name, runner);
}

ReleaseChannel::ReleaseChannel(std::string executable, std::string repository, CommandRunning& runner)
    : policy_{std::move(executable),
              {{"release", "view", "--repo", repository, "--json", std::string(viewFields)},
               {"release", "download", "--repo", repository, "--pattern"}}},
      runner_(&runner),
      downloadRunner_(&runner),
      repository_(std::move(repository)),
      platform_(hostPlatform()) {}

std::filesystem::path ReleaseChannel::freshDownloadFolder() {
    std::error_code error;
    const auto base = std::filesystem::temp_directory_path(error);
    if (error) throw UpdateError::failed("No temporary folder for the download: " + error.message());
    std::string pattern = (base / "velmora-update-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw UpdateError::failed("Could not create a folder for the download in " + base.string() + ": " +
                                  std::generic_category().message(errno));
    return pattern;
}

ReleaseChannel& ReleaseChannel::forPlatform(Platform platform) {
    platform_ = platform;
    return *this;
}

ReleaseChannel& ReleaseChannel::withDownloadRunner(CommandRunning& runner) {
    downloadRunner_ = &runner;
    return *this;
}

UpdateError ReleaseChannel::classify(const CommandError& error) {
    if (error.kind() != CommandError::Kind::failed) return UpdateError::failed(error.description());
    const std::string message = toLower(error.text());
    // gh exits with 4 when it needs authentication; its texts say "gh auth login", or name
    // GH_TOKEN when it runs without a terminal (automation, CI).
    if (error.status() == 4 || (contains(message, "auth") && contains(message, "login")) ||
        contains(message, "gh_token"))
        return UpdateError::notSignedIn();
    if (contains(message, "not found")) return UpdateError::noRelease();
    return UpdateError::failed(error.text().empty() ? error.description() : error.text());
}

std::string ReleaseChannel::run(const std::vector<std::string>& arguments, CommandRunning& runner) const {
    try {
        return policy_.run(arguments, runner);
    } catch (const CommandError& error) {
        throw classify(error);
    }
}

ReleaseInfo ReleaseChannel::latest() const {
    const auto output = run({"release", "view", "--repo", repository_, "--json", std::string(viewFields)}, *runner_);
    return parse(output, platform_);
}

ReleaseInfo ReleaseChannel::parse(std::string_view bytes, Platform platform) {
    Json document;
    try {
        document = parseJsonText(bytes, "the release description from gh");
    } catch (const DecodingError& error) {
        throw UpdateError::failed(error.what());
    }
    if (!document.is_object())
        throw UpdateError::failed(std::string("The release description from gh is not a JSON object but ") +
                                  document.type_name() + ".");
    ReleaseInfo info;
    info.version = textOr(document, "tagName");
    info.title = textOr(document, "name");
    info.notes = textOr(document, "body");
    info.url = textOr(document, "url");
    info.publishedAt = ISO8601::parse(textOr(document, "publishedAt"));
    info.build = buildNumber(info.notes);
    pickAssets(assetNames(document), platform, info);
    return info;
}

void ReleaseChannel::fetch(const ReleaseInfo& info, const std::string& asset,
                           const std::filesystem::path& folder) const {
    if (!isPlainName(asset))
        throw UpdateError::failed("The release asset name '" + asset + "' is not a plain file name.");
    std::vector<std::string> arguments{"release", "download", "--repo",        repository_, "--pattern",
                                       asset,     "--dir",    folder.string(), "--clobber"};
    // The tag we described, not whatever is newest by now; "--" keeps a tag from reading as an option.
    if (!info.version.empty()) {
        arguments.emplace_back("--");
        arguments.push_back(info.version);
    }
    run(arguments, *downloadRunner_);
}

std::filesystem::path ReleaseChannel::download(const ReleaseInfo& info, const std::filesystem::path& folder) const {
    if (!info.packageAsset) throw UpdateError::missingAsset();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw UpdateError::failed("Could not create " + folder.string() + ": " + error.message());

    const auto package = folder / *info.packageAsset;
    fetch(info, *info.packageAsset, folder);
    std::optional<std::string> published;
    if (info.checksumAsset) {
        fetch(info, *info.checksumAsset, folder);
        try {
            if (const auto text = AtomicFile::read(folder / *info.checksumAsset, checksumReadLimit))
                published = ChecksumFile::publishedDigest(*text);
        } catch (const FileError&) {
            // An unreadable or oversized checksum file publishes nothing we can trust.
        }
    }
    std::string actual;
    try {
        actual = ChecksumFile::digestOfFile(package);
    } catch (const FileError& problem) {
        throw UpdateError::failed(std::string("gh did not save the package: ") + problem.what());
    }
    if (!published || *published != actual) {
        // Nobody should find an unverified package and install it by hand.
        std::filesystem::remove(package, error);
        throw UpdateError::checksumMismatch();
    }
    return package;
}

}  // namespace corvel
