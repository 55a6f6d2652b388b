// The engine on a real temporary file on this machine's disk, with a small file and a fraction of
// a second per job; and the volume inspection on scratch mounts made inside a temporary folder.
#include "benchmark/BenchmarkEngine.h"
#include "benchmark/BenchmarkVolume.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#if defined(__linux__)
#include <sys/mount.h>
#endif

namespace corvel {
namespace {

using ::testing::Contains;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::Optional;
using testing::TemporaryFolder;

BenchmarkOptions smallOptions(const std::string& folder) {
    BenchmarkOptions options;
    options.folder = folder;
    options.fileBytes = 8LL << 20;
    options.secondsPerJob = 0.05;
    options.pauseSeconds = 0;
    return options;
}

bool isEmptyFolder(const std::string& folder) {
    return std::filesystem::directory_iterator(folder) == std::filesystem::directory_iterator();
}

TEST(BenchmarkEngine, EveryFigureIsPositiveAndConsistentAndTheFileIsGone) {
    TemporaryFolder folder;
    const auto options = smallOptions(folder.path());
    const auto facts = BenchmarkVolume::inspect(folder.path());
    BenchmarkProgress progress;
    const auto run = BenchmarkEngine::run(
        options, facts, BenchmarkJob::standardSet(), progress, [] { return false; }, TimePoint{});

    ASSERT_EQ(run.results.size(), BenchmarkJob::standardSet().size());
    EXPECT_FALSE(run.isInterrupted);
    EXPECT_EQ(run.fileBytes, 8LL << 20);
    EXPECT_EQ(progress.preparedBytes.load(), 8LL << 20);
    for (const auto& result : run.results) {
        SCOPED_TRACE(result.name);
        EXPECT_GT(result.operations, 0);
        EXPECT_GE(result.seconds, options.secondsPerJob);
        EXPECT_GT(result.megabytesPerSecond, 0);
        EXPECT_GT(result.latencyP50Micros, 0);
        EXPECT_LE(result.latencyP50Micros, result.latencyP99Micros);
        EXPECT_LE(result.latencyP99Micros, result.latencyP999Micros);
        EXPECT_EQ(result.bytesMoved, result.operations * result.job.blockBytes);
        EXPECT_NEAR(result.iops * static_cast<double>(result.job.blockBytes) * result.seconds,
                    static_cast<double>(result.bytesMoved), 1.0);
        EXPECT_NEAR(result.megabytesPerSecond * 1e6 * result.seconds, static_cast<double>(result.bytesMoved), 1.0);
    }
    EXPECT_TRUE(isEmptyFolder(folder.path()));
}

TEST(BenchmarkEngine, CancellingStopsBetweenJobsAndKeepsOnlyFinishedOnes) {
    TemporaryFolder folder;
    const auto options = smallOptions(folder.path());
    BenchmarkProgress progress;
    // Cancelled once the second job has started: the first is kept, the cut one is not.
    const auto run = BenchmarkEngine::run(
        options, BenchmarkVolume::inspect(folder.path()), BenchmarkJob::standardSet(), progress,
        [&] { return progress.jobIndex.load() >= 1; }, TimePoint{});
    EXPECT_TRUE(run.isInterrupted);
    ASSERT_EQ(run.results.size(), 1u);
    EXPECT_EQ(run.results[0].name, "SEQ1M Q8 write");
    EXPECT_TRUE(isEmptyFolder(folder.path()));
}

TEST(BenchmarkEngine, AFailureLeavesNoFileAndNamesTheFolder) {
    TemporaryFolder folder;
    auto options = smallOptions(folder.path("missing"));
    BenchmarkProgress progress;
    EXPECT_THROW(BenchmarkVolume::inspect(options.folder), BenchmarkError);
    try {
        BenchmarkEngine::run(
            options, {}, BenchmarkJob::standardSet(), progress, [] { return false; }, TimePoint{});
        FAIL() << "a missing folder was measured";
    } catch (const BenchmarkError& error) {
        EXPECT_THAT(error.description(), HasSubstr(folder.path("missing")));
    }
    options.folder = folder.path();
    options.secondsPerJob = 0;
    EXPECT_THROW(BenchmarkEngine::run(
                     options, {}, {}, progress, [] { return false; }, TimePoint{}),
                 BenchmarkError);
    EXPECT_TRUE(isEmptyFolder(folder.path()));
}

#if defined(__linux__)
// A scratch mount inside a temporary folder, detached when the test ends.
class ScratchMount {
public:
    ScratchMount(const std::string& source, const std::string& target, const char* type, unsigned long flags,
                 const char* data)
        : target_(target) {
        mounted_ = ::mount(source.c_str(), target.c_str(), type, flags, data) == 0;
        error_ = errno;
    }
    ~ScratchMount() {
        if (mounted_) ::umount2(target_.c_str(), MNT_DETACH);
    }
    bool mounted() const { return mounted_; }
    std::string error() const { return std::strerror(error_); }
    bool remountReadOnly() {
        return ::mount("none", target_.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
    }

private:
    std::string target_;
    bool mounted_ = false;
    int error_ = 0;
};

TEST(BenchmarkVolume, RefusesAReadOnlyBindMountAndATooSmallTmpfs) {
    TemporaryFolder folder;
    const auto options = smallOptions(folder.path("bind"));
    folder.makeFolder("source");
    folder.makeFolder("bind");
    ScratchMount bind(folder.path("source"), folder.path("bind"), nullptr, MS_BIND, nullptr);
    if (!bind.mounted()) GTEST_SKIP() << "cannot bind-mount here (needs CAP_SYS_ADMIN): " << bind.error();
    ASSERT_TRUE(bind.remountReadOnly());
    const auto readOnly = BenchmarkVolume::inspect(folder.path("bind"));
    EXPECT_EQ(readOnly.mountPoint, folder.path("bind"));
    EXPECT_THAT(BenchmarkPreflight::check(readOnly, options, false),
                Optional(Field(&BenchmarkRefusal::reason, BenchmarkRefusalReason::readOnly)));

    folder.makeFolder("small");
    ScratchMount tmpfs("velmora-test", folder.path("small"), "tmpfs", 0, "size=16m");
    ASSERT_TRUE(tmpfs.mounted()) << tmpfs.error();
    const auto small = BenchmarkVolume::inspect(folder.path("small"));
    EXPECT_EQ(small.fileSystemType, "tmpfs");
    EXPECT_FALSE(small.isReadOnly);
    EXPECT_THAT(BenchmarkPreflight::check(small, smallOptions(folder.path("small")), false),
                Optional(Field(&BenchmarkRefusal::message, HasSubstr(folder.path("small") + " has 16.8 MB free"))));

    // The engine itself still works there, falling back visibly where direct I/O is refused.
    BenchmarkProgress progress;
    auto options2 = smallOptions(folder.path("small"));
    options2.fileBytes = 4LL << 20;
    const auto run = BenchmarkEngine::run(
        options2, small, {{IOPattern::randomRead, 4096, 2}}, progress, [] { return false; }, TimePoint{});
    ASSERT_EQ(run.results.size(), 1u);
    EXPECT_GT(run.results[0].operations, 0);
    if (!run.isCacheBypassed) {
        EXPECT_THAT(run.notes, Contains(HasSubstr("direct I/O")));
    }
    EXPECT_TRUE(isEmptyFolder(folder.path("small")));
}
#endif

}  // namespace
}  // namespace corvel
