// The cleanup history: capped at 200, newest kept, a broken file read as empty and replaced.
#include "cleanup/CleanupHistory.h"
#include "cleanup/CleanupPlanner.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace corvel {
namespace {

using ::testing::HasSubstr;
using testing::TemporaryFolder;

CleanupSimulation simulationNumber(int number) {
    CleanupCandidate candidate;
    candidate.path = "/home/me/.cache/tool" + std::to_string(number);
    candidate.name = "tool" + std::to_string(number);
    candidate.classification = {SpaceCategory::caches, CleanupRisk::green, "tool", "Cache.", std::nullopt};
    candidate.exclusiveBytes = number;
    const auto when = *ISO8601::parse("2026-01-01T00:00:00Z") + std::chrono::minutes(number);
    auto simulation = CleanupPlanner::simulate({candidate}, "Data", 1000, {}, {}, {}, when);
    simulation.id = "SIM-" + std::to_string(number);
    return simulation;
}

TEST(CleanupHistory, TwoHundredAndOneAppendsKeepTheNewestTwoHundred) {
    TemporaryFolder folder;
    {
        auto history = CleanupHistory::open(folder.root());
        EXPECT_EQ(history.file(), folder.root() / "cleanup-simulations.json");
        for (int number = 1; number <= 201; ++number) history.append(simulationNumber(number));
    }
    auto reloaded = CleanupHistory::open(folder.root());
    const auto all = reloaded.all();
    ASSERT_EQ(all.size(), 200u);
    EXPECT_EQ(all.front(), simulationNumber(2));
    EXPECT_EQ(all.back(), simulationNumber(201));
    EXPECT_FALSE(reloaded.loadProblem());

    const auto newest = CleanupHistory::newestFirst(all, 3);
    ASSERT_EQ(newest.size(), 3u);
    EXPECT_EQ(newest[0].id, "SIM-201");
    EXPECT_EQ(newest[2].id, "SIM-199");
    EXPECT_EQ(CleanupHistory::newestFirst(all, 500).size(), 200u);
}

TEST(CleanupHistory, ABrokenFileReadsAsEmptyAndTheNextSimulationReplacesIt) {
    TemporaryFolder folder;
    const Json valid = std::vector{simulationNumber(1)};
    Json otherMode = valid;
    otherMode[0]["mode"] = "deletion";
    for (const std::string& contents : {std::string("[{\"id\": "), std::string("{}"), otherMode.dump()}) {
        folder.write("cleanup-simulations.json", contents);
        auto history = CleanupHistory::open(folder.root());
        EXPECT_TRUE(history.all().empty()) << contents;
        EXPECT_THAT(history.loadProblem().value_or(""), HasSubstr("cleanup-simulations.json")) << contents;
        history.append(simulationNumber(7));
        EXPECT_THAT(CleanupHistory::open(folder.root()).all(), ::testing::ElementsAre(simulationNumber(7))) << contents;
    }
}

TEST(CleanupHistory, FindsASimulationByItsIdOrAUniqueStartOfIt) {
    std::vector<CleanupSimulation> simulations;
    for (const char* id : {"3F2A0000-AAAA", "3F2B0000-BBBB", "77770000-CCCC"}) {
        simulations.push_back(simulationNumber(1));
        simulations.back().id = id;
    }
    EXPECT_EQ(CleanupHistory::find(simulations, "77770000-CCCC").id, "77770000-CCCC");
    EXPECT_EQ(CleanupHistory::find(simulations, "3f2b").id, "3F2B0000-BBBB");
    struct Case {
        const char* id;
        const char* message;
    };
    for (const auto& [id, message] : {Case{"3F2", "at least its first four"}, Case{"3F2A1", "no simulation"},
                                      Case{"3F2", "'3F2'"}, Case{"", "at least"}}) {
        try {
            CleanupHistory::find(simulations, id);
            ADD_FAILURE() << id;
        } catch (const CleanupHistory::LookupError& error) {
            EXPECT_THAT(error.what(), HasSubstr(message)) << id;
        }
    }
    simulations.push_back(simulations.front());
    simulations.back().id = "3F2A0000-DDDD";
    EXPECT_THROW(CleanupHistory::find(simulations, "3F2A"), CleanupHistory::LookupError);
}

}  // namespace
}  // namespace corvel
