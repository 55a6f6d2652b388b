// A whole simulation on a real temporary tree: every safety rule a tree can trigger, with this
// machine's own open-file lister, and not one file of the tree changed by it.
#include "cleanup/CleanupRun.h"
#include "cleanup/SystemOpenFiles.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <tuple>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TemporaryFolder;

// Every entry below `root` with its kind, size and modification time to the nanosecond.
std::map<std::string, std::tuple<int, std::int64_t, std::int64_t>> listing(const std::filesystem::path& root) {
    std::map<std::string, std::tuple<int, std::int64_t, std::int64_t>> entries;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        struct stat facts {};
        if (::lstat(entry.path().c_str(), &facts) != 0) continue;
        entries[entry.path().string()] = {static_cast<int>(facts.st_mode), facts.st_size,
                                          facts.st_mtim.tv_sec * 1'000'000'000LL + facts.st_mtim.tv_nsec};
    }
    return entries;
}

StorageVolume volumeAt(const std::string& mountPoint, const std::string& name, std::int64_t available) {
    StorageVolume volume;
    volume.id = name;
    volume.name = name;
    volume.mountPoint = mountPoint;
    volume.availableBytes = available;
    return volume;
}

TEST(CleanupRun, ARealTreeMeetsEveryRuleAndStaysUntouched) {
    TemporaryFolder folder;
    const std::string home = folder.path("home");
    folder.write("home/.cache/tool/blob", std::string(64'000, 'b'));
    folder.write("home/.cache/pip/wheels/w.whl", std::string(8'000, 'w'));
    const auto held = folder.write("home/.cache/held/data", std::string(8'000, 'h'));
    folder.write("home/Downloads/movie.iso", std::string(8'000, 'm'));
    folder.write("home/src/tool/main.c", "int main(void) { return 0; }");
    folder.write("home/src/app/node_modules/.env", "TOKEN=1");
    folder.write("home/src/app/node_modules/lib.js", "module.exports = 1;");
    const auto before = listing(folder.root());

    const int open = ::open(held.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(open, 0);
    CleanupSources sources{SpaceCatalog(home, {home + "/src"}, Platform::linux),
                           [&] {
                               return std::vector{volumeAt("/", "Root", 1000), volumeAt(home, "Home", 5'000'000)};
                           },
                           systemOpenFiles(), std::make_shared<FixedRunningApplications>(std::set<std::string>{"PIP"}),
                           *ISO8601::parse("2026-11-02T09:30:00Z")};
    ScanProgress progress;
    const auto run = CleanupRun::simulatePaths(
        {home + "/.cache/tool", home + "/.cache/tool/blob", home + "/.cache/pip", home + "/.cache/held",
         home + "/Downloads", home + "/src/tool", home + "/src/app/node_modules", home + "/gone"},
        sources, progress, {});
    ::close(open);

    const auto& simulation = run.simulation;
    EXPECT_EQ(simulation.volumeName, "Home");
    EXPECT_EQ(simulation.volumeFreeBefore, 5'000'000);
    // The blob lies inside the selected tool cache and counts once, with it.
    ASSERT_THAT(simulation.eligible, ElementsAre(Field(&CleanupCandidate::path, home + "/.cache/tool")));
    EXPECT_GE(simulation.estimatedRecoverableMinimum(), 64'000);
    EXPECT_EQ(simulation.projectedFreeAfter(), 5'000'000 + simulation.estimatedRecoverableMinimum());

    std::map<std::string, std::string> reasons;
    for (const auto& exclusion : simulation.excluded)
        reasons[exclusion.candidate.path.substr(home.size())] = exclusion.reason;
    EXPECT_EQ(reasons["/.cache/pip"], "pip is running. Quit it before cleaning its data.");
    EXPECT_EQ(reasons["/.cache/held"], "In use: " + held + " is open by a running process.");
    EXPECT_EQ(reasons["/Downloads"], "Classified GRAY: Origin or impact unknown. Never offered for cleanup.");
    EXPECT_THAT(reasons["/src/tool"], StartsWith("Classified RED: "));
    EXPECT_EQ(reasons["/src/app/node_modules"],
              "Contains 1 file(s) that look like credentials (.env\u2026). Recover what you still need before "
              "emptying; contents were not read.");
    EXPECT_EQ(reasons.size(), 5u);
    EXPECT_THAT(simulation.checks, Contains("5 item(s) excluded by safety rules."));
    EXPECT_THAT(run.problems, ElementsAre(CleanupPathProblem{home + "/gone", "no such file or folder"}));

    EXPECT_EQ(listing(folder.root()), before);
}

TEST(CleanupRun, NothingMeasurableIsOneErrorNamingEveryPath) {
    TemporaryFolder folder;
    const CleanupSources sources{SpaceCatalog(folder.path(), {}, Platform::linux), {}, nullptr, nullptr, {}};
    ScanProgress progress;
    try {
        CleanupRun::simulatePaths({folder.path("a"), folder.path("b")}, sources, progress, {});
        ADD_FAILURE() << "simulated nothing without saying so";
    } catch (const CleanupRunError& error) {
        EXPECT_THAT(error.what(), AllOf(HasSubstr(folder.path("a") + ": no such file or folder"),
                                        HasSubstr(folder.path("b") + ": no such file or folder")));
    }
}

TEST(CleanupRun, TheDeepestMountPointHoldsAPathAndOnlyAtAFolderBoundary) {
    const std::vector volumes{volumeAt("/", "Root", 1), volumeAt("/home", "Home", 2), volumeAt("/home/me/x", "X", 3)};
    struct Case {
        const char* path;
        const char* volume;
    };
    for (const auto& [path, name] : {Case{"/home/me/.cache", "Home"}, Case{"/home/me/x/y", "X"},
                                     Case{"/home/me/xy", "Home"}, Case{"/homes", "Root"}, Case{"/home", "Home"}})
        EXPECT_EQ(CleanupRun::volumeHolding(path, volumes).value_or(StorageVolume{}).name, name) << path;
    EXPECT_EQ(CleanupRun::volumeHolding("/a", {volumeAt("/b", "B", 1)}), std::nullopt);
}

}  // namespace
}  // namespace corvel
