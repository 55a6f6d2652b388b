// The command shown for review at the end of a simulation.
#include "cleanup/ManualCleanup.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

namespace corvel {
namespace {

TEST(ManualCleanup, OneRemovalCommandForTheEligibleItemsOnly) {
    CleanupSimulation simulation;
    EXPECT_EQ(ManualCleanup::removalCommand(simulation), std::nullopt);
    simulation.eligible.resize(2);
    simulation.eligible[0].path = "/home/me/.cache/pip";
    simulation.eligible[1].path = "/home/me/it's here";
    simulation.excluded.push_back({});
    simulation.excluded[0].candidate.path = "/home/me/Downloads";
    EXPECT_EQ(ManualCleanup::removalCommand(simulation), "rm -r -- '/home/me/.cache/pip' '/home/me/it'\\''s here'");
}

TEST(ManualCleanup, AQuotedPathReachesTheShellAsOneWordUnchanged) {
    testing::TemporaryFolder folder;
    for (const std::string name : {"plain", "it's", "$(touch pwned)", "a b\tc", "-rf", "\"*\"", "back\\slash"}) {
        const auto path = folder.root() / name;
        // `test -e` sees the file only when the quoted word arrives exactly as the name.
        std::filesystem::create_directory(path);
        const std::string command = "test -d " + ManualCleanup::shellQuoted(path.string());
        const int status = std::system(command.c_str());
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << name;
        std::filesystem::remove(path);
        EXPECT_NE(std::system(command.c_str()), 0) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(folder.root() / "pwned"));
    EXPECT_FALSE(std::filesystem::exists("pwned"));
}

}  // namespace
}  // namespace corvel
