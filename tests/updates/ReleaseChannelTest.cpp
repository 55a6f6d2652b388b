#include "updates/ReleaseChannel.h"

#include "common/AtomicFile.h"
#include "common/SHA256.h"
#include "common/Text.h"
#include "support/ScriptedRunner.h"
#include "support/TemporaryFolder.h"
#include "updates/ChecksumFile.h"
#include "updates/SemVer.h"
#include "updates/UpdateCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace corvel {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::ScriptedRunner;

const std::string gh = "/usr/bin/gh";
const std::string repo = "velmora-app/velmora";
const std::vector<std::string> view{"release", "view",   "--repo",
                                    repo,      "--json", "tagName,name,body,publishedAt,url,assets"};

ReleaseChannel channelWith(ScriptedRunner& runner, Platform platform = Platform::linux) {
    auto channel = ReleaseChannel::locate(std::nullopt, runner, {{"PATH", "relative/bin:/usr/bin"}},
                                          [](const std::string& path) { return path == gh; });
    return channel->forPlatform(platform);
}

// The error `work` throws; a failure when it throws none.
template <class Work>
UpdateError updateErrorOf(Work&& work) {
    try {
        work();
    } catch (const UpdateError& error) {
        return error;
    }
    ADD_FAILURE() << "no UpdateError";
    return UpdateError::failed("none");
}

TEST(SemVer, ComparesNumbersPositionByPosition) {
    const struct {
        const char* a;
        const char* b;
        VersionOrder order;
    } pairs[] = {
        {"1.9", "1.10", VersionOrder::ascending},
        {"1.2", "1.2.0", VersionOrder::same},
        {"v3.4.5-rc1", "3.4.5", VersionOrder::same},
        {" V2.0 ", "1.99.99", VersionOrder::descending},
        {"0.1.0", "0.1.1", VersionOrder::ascending},
        {"", "0.0", VersionOrder::same},
        {"1.x.3", "1.0.3", VersionOrder::same},
        {"99999999999999999999", "9223372036854775806", VersionOrder::descending},
        {"1..2", "1.2", VersionOrder::same},
        {"2.0-beta", "1.9", VersionOrder::descending},
    };
    for (const auto& p : pairs) {
        EXPECT_EQ(SemVer::compare(p.a, p.b), p.order) << p.a << " vs " << p.b;
        const auto reverse = p.order == VersionOrder::same        ? VersionOrder::same
                             : p.order == VersionOrder::ascending ? VersionOrder::descending
                                                                  : VersionOrder::ascending;
        EXPECT_EQ(SemVer::compare(p.b, p.a), reverse) << p.b << " vs " << p.a;
    }
    EXPECT_THAT(SemVer::parts(" v3.4.5-rc1 "), ElementsAre(3, 4, 5));
}

TEST(ReleaseChannel, FindsGitHubCLIAtFixedLocationsThenOnAbsolutePath) {
    const Environment environment{{"PATH", "bin:/opt/tools:/usr/bin"}};
    const auto only = [](std::set<std::string> present) {
        return [present](const std::string& path) { return present.contains(path); };
    };
    EXPECT_EQ(ReleaseChannel::findGitHubCLI(environment, only({"/usr/bin/gh", "/usr/local/bin/gh"})),
              "/usr/local/bin/gh");
    EXPECT_EQ(ReleaseChannel::findGitHubCLI(environment, only({"/usr/bin/gh", "/opt/tools/gh"})), "/opt/tools/gh");
    EXPECT_EQ(ReleaseChannel::findGitHubCLI(environment, only({"bin/gh"})), std::nullopt);
    ScriptedRunner runner;
    EXPECT_FALSE(ReleaseChannel::locate(std::nullopt, runner, environment, only({})));
    EXPECT_THROW(ReleaseChannel::locate("not a repo", runner, environment, only({gh})), UpdateError);
}

TEST(ReleaseChannel, PolicyAllowsOnlyTheTwoCommandsForItsRepository) {
    ScriptedRunner runner;
    const auto channel = channelWith(runner);
    EXPECT_EQ(channel.policy().executable, gh);
    EXPECT_TRUE(channel.policy().permits({"release", "download", "--repo", repo, "--pattern", "a.deb"}));
    EXPECT_TRUE(channel.policy().permits(view));
    for (const std::vector<std::string>& refused : {
             std::vector<std::string>{"release", "delete", "--repo", repo},
             std::vector<std::string>{"release", "download", "--repo", "someone/else", "--pattern", "a"},
             std::vector<std::string>{"auth", "token"},
         })
        EXPECT_FALSE(channel.policy().permits(refused));
}

TEST(ReleaseChannel, ParsesRecordedReleasesOfSeveralShapes) {
    const struct {
        const char* fixture;
        Platform platform;
        const char* version;
        std::optional<std::string> package;
        std::optional<std::string> checksum;
    } cases[] = {
        {"gh/release-view-stable-targz-sha256.json", Platform::linux, "v0.12.0",
         "aigent-hive-0.12.0-x86_64-unknown-linux-musl.tar.gz",
         "aigent-hive-0.12.0-x86_64-unknown-linux-musl.tar.gz.sha256"},
        // Only tarballs for other systems and no .pkg: nothing to install on a Mac.
        {"gh/release-view-stable-targz-sha256.json", Platform::macos, "v0.12.0", std::nullopt, std::nullopt},
        {"gh/release-view-prerelease-from-rest.json", Platform::linux, "11.1.5-SNAPSHOT.20250717232749", std::nullopt,
         std::nullopt},
        {"gh/release-view-no-assets-from-rest.json", Platform::macos, "release-1.0.0", std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fixture);
        const auto info = ReleaseChannel::parse(testing::readFixture(c.fixture), c.platform);
        EXPECT_EQ(info.version, c.version);
        EXPECT_EQ(info.packageAsset, c.package);
        EXPECT_EQ(info.checksumAsset, c.checksum);
        EXPECT_TRUE(info.publishedAt || info.version == "v0.12.0");
    }
    const auto pkg = ReleaseChannel::parse(
        R"({"tagName": "v1.2.0", "name": 7, "body": "Fixes.\r\nBuild: 202611021\n",
            "assets": [{"name": "Velmora-1.2.0.pkg.sha256"}, {"name": "Velmora-1.2.0.pkg"}, "odd", {"name": null}]})",
        Platform::macos);
    EXPECT_EQ(pkg.build, "202611021");
    EXPECT_EQ(pkg.title, "");
    EXPECT_EQ(pkg.packageAsset, "Velmora-1.2.0.pkg");
    EXPECT_EQ(pkg.checksumAsset, "Velmora-1.2.0.pkg.sha256");
    EXPECT_EQ(
        ReleaseChannel::parse(R"({"assets": [{"name": "velmora_1.2.0_amd64.deb"}]})", Platform::linux).packageAsset,
        "velmora_1.2.0_amd64.deb");

    for (const std::string& bad : {testing::readFixture("gh/release-rest-list-prerelease-and-stable-no-assets.json"),
                                   std::string("\"text\""), std::string("{cut off")}) {
        const auto error = updateErrorOf([&] { ReleaseChannel::parse(bad); });
        EXPECT_EQ(error.kind(), UpdateError::Kind::failed);
        EXPECT_THAT(error.description(), HasSubstr("release description from gh")) << bad.substr(0, 40);
    }
}

TEST(ReleaseChannel, ClassifiesRecordedFailures) {
    const struct {
        CommandError error;
        UpdateError expected;
    } cases[] = {
        {CommandError::failed(4,
                              "To get started with GitHub CLI, please run:  gh auth login\nAlternatively, populate the "
                              "GH_TOKEN environment variable with a GitHub API authentication token."),
         UpdateError::notSignedIn()},
        {CommandError::failed(1, "gh: To use GitHub CLI in automation, set the GH_TOKEN environment variable."),
         UpdateError::notSignedIn()},
        {CommandError::failed(
             1, "HTTP 401: Bad credentials (https://api.github.com/graphql)\nTry authenticating with:  gh auth login"),
         UpdateError::notSignedIn()},
        {CommandError::failed(1, "release not found"), UpdateError::noRelease()},
        {CommandError::failed(1, "GraphQL: Could not resolve to a Repository with the name 'owner/repo'. (repository)"),
         UpdateError::failed("GraphQL: Could not resolve to a Repository with the name 'owner/repo'. (repository)")},
    };
    for (const auto& c : cases) EXPECT_EQ(ReleaseChannel::classify(c.error), c.expected) << c.error.text();
    EXPECT_EQ(ReleaseChannel::classify(CommandError::timedOut()).kind(), UpdateError::Kind::failed);

    ScriptedRunner runner;
    runner.answer(gh, view, CommandError::failed(1, "release not found"));
    EXPECT_EQ(updateErrorOf([&] { channelWith(runner).latest(); }).description(), "No release published yet.");
}

TEST(UpdateCheck, AnnouncesANewerReleaseWithItsFirstNoteLines) {
    ScriptedRunner runner;
    runner.answer(gh, view, R"({"tagName": "v0.2.0", "body": "\n  First line\n\nSecond\n3\n4\n5\n6\n"})");
    const auto check = UpdateCheck::evaluate(channelWith(runner).latest(), "0.1.0");
    EXPECT_TRUE(check.isNewer);
    EXPECT_EQ(check.availableVersion, "0.2.0");
    EXPECT_THAT(check.notesPreview, ElementsAre("First line", "Second", "3", "4", "5"));
    EXPECT_FALSE(UpdateCheck::evaluate(check.release, "0.2.0").isNewer);
    EXPECT_FALSE(UpdateCheck::evaluate(check.release, "0.10.0").isNewer);
}

TEST(ChecksumFile, TakesTheFirst64HexadecimalCharacters) {
    const std::string digest(64, 'a');
    EXPECT_EQ(ChecksumFile::publishedDigest(std::string(64, 'A') + "  velmora.deb\n"), digest);
    EXPECT_EQ(ChecksumFile::publishedDigest("sha256:" + digest), digest);
    EXPECT_EQ(ChecksumFile::publishedDigest("abc " + std::string(63, 'b') + "\n" + digest + "b"), digest);
    EXPECT_EQ(ChecksumFile::publishedDigest(std::string(63, 'a') + "g"), std::nullopt);
    EXPECT_EQ(ChecksumFile::publishedDigest(""), std::nullopt);
    EXPECT_EQ(ChecksumFile::line(digest, "v.deb"), digest + "  v.deb\n");
}

ReleaseInfo releaseWith(std::string version, std::optional<std::string> package,
                        std::optional<std::string> checksum = std::nullopt) {
    ReleaseInfo info;
    info.version = std::move(version);
    info.packageAsset = std::move(package);
    info.checksumAsset = std::move(checksum);
    return info;
}

// A recorded `gh release download` that writes what the release holds into --dir.
struct RecordedDownload {
    ScriptedRunner runner;
    ReleaseInfo release = releaseWith("v0.2.0", "velmora-0.2.0-linux.tar.gz", "velmora-0.2.0-linux.tar.gz.sha256");
    std::map<std::string, std::string> assets;

    RecordedDownload(const fs::path& folder) {
        for (const auto& asset : {*release.packageAsset, *release.checksumAsset})
            runner.answer(gh,
                          {"release", "download", "--repo", repo, "--pattern", asset, "--dir", folder.string(),
                           "--clobber", "--", "v0.2.0"},
                          "");
        runner.onRun = [this, folder](const ScriptedRunner::Call& call) {
            const auto& asset = call.arguments.at(5);
            if (assets.contains(asset)) AtomicFile::write(folder / asset, assets.at(asset));
        };
    }
};

TEST(ReleaseChannel, DownloadKeepsOnlyAPackageMatchingItsChecksum) {
    const std::string package = "the package bytes";
    const std::string digest = SHA256::hex(package);
    auto oneCharacterOff = digest;
    oneCharacterOff[10] = oneCharacterOff[10] == 'f' ? 'e' : 'f';
    const struct {
        const char* name;
        std::optional<std::string> checksumFile;
        bool verified;
    } cases[] = {
        {"matching, upper case", ChecksumFile::line(toUpper(digest), "velmora-0.2.0-linux.tar.gz"), true},
        {"one character off", ChecksumFile::line(oneCharacterOff, "velmora-0.2.0-linux.tar.gz"), false},
        {"no digest in the file", "not found\n", false},
        {"no checksum published", std::nullopt, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        testing::TemporaryFolder folder;
        const auto target = folder.root() / "downloads";
        RecordedDownload download(target);
        download.assets[*download.release.packageAsset] = package;
        if (c.checksumFile)
            download.assets[*download.release.checksumAsset] = *c.checksumFile;
        else
            download.release.checksumAsset.reset();
        const auto channel = channelWith(download.runner);
        const auto packagePath = target / *download.release.packageAsset;
        if (c.verified) {
            EXPECT_EQ(channel.download(download.release, target), packagePath);
            EXPECT_TRUE(fs::exists(packagePath));
        } else {
            EXPECT_EQ(updateErrorOf([&] { channel.download(download.release, target); }).description(),
                      "The downloaded package does not match its published checksum. It was not installed.");
            EXPECT_FALSE(fs::exists(packagePath));
        }
    }
}

TEST(ReleaseChannel, DownloadFailsClearlyWithoutAPackageOrWhenGhSavesNothing) {
    testing::TemporaryFolder folder;
    ScriptedRunner runner;
    const auto channel = channelWith(runner);
    EXPECT_EQ(updateErrorOf([&] { channel.download(releaseWith("v1", std::nullopt), folder.root()); }).description(),
              "The release has no installer package.");
    EXPECT_THAT(runner.calls, ::testing::IsEmpty());
    RecordedDownload download(folder.root());  // gh succeeds but writes nothing
    EXPECT_THAT(
        updateErrorOf([&] { channelWith(download.runner).download(download.release, folder.root()); }).description(),
        HasSubstr("gh did not save the package"));
    EXPECT_THROW(channel.download(releaseWith("", "*.deb"), folder.root()), UpdateError);
}

}  // namespace
}  // namespace corvel
