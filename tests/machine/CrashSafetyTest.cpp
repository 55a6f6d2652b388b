// Every persisted file survives a kill -9 in the middle of a write: a child process rewrites the
// file in a loop, alternating two values, and is killed at a random moment, a thousand times in all.
// Whatever the moment, the file must read back, through its own loader, as one of the two values.
#include "common/JSONHistory.h"
#include "diagnostics/SettingsStore.h"
#include "space/SpaceSummary.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <functional>
#include <iterator>
#include <memory>
#include <random>

using namespace corvel;
using corvel::testing::TemporaryFolder;
using ::testing::AnyOf;
using ::testing::Eq;

namespace {

struct PersistedFile {
    const char* name;
    // Opens the file's store in the data folder and returns a function writing value 0 or 1, so
    // that the child's loop spends its time writing rather than opening.
    std::function<std::function<void(int)>(const std::filesystem::path& data)> open;
    // Reads the file back through the product's loader: 0 or 1, or -1 for anything else.
    std::function<int(const std::filesystem::path& data)> read;
};

constexpr int entries = 300;  // large enough that a write spans many kill moments

CorvelSettings settingsValue(int value) {
    auto settings = CorvelSettings::defaults("/home/user");
    settings.intervalMinutes = 10 + value;
    for (int i = 0; i < entries; ++i)
        settings.customFootprintPaths.push_back("/home/user/project-" + std::to_string(i));
    return settings;
}

SpaceSummary summaryValue(int value) {
    SpaceSummary summary;
    summary.root = "/home/user";
    summary.allocatedBytes = 1000 + value;
    for (int i = 0; i < entries; ++i)
        summary.credentialsInTrash.push_back("/home/user/.Trash/key-" + std::to_string(i));
    return summary;
}

const PersistedFile persistedFiles[] = {
    {"settings",
     [](const auto& data) {
         auto store = std::make_shared<SettingsStore>(data, "/home/user");
         return [store](int value) { store->save(settingsValue(value)); };
     },
     [](const auto& data) {
         const auto loaded = SettingsStore(data, "/home/user").load();
         if (!loaded.fromFile) return -1;
         return loaded.settings == settingsValue(0) ? 0 : loaded.settings == settingsValue(1) ? 1 : -1;
     }},
    {"space summary", [](const auto& data) { return [data](int value) { summaryValue(value).save(data); }; },
     [](const auto& data) {
         const auto summary = SpaceSummary::load(data);
         return summary == summaryValue(0) ? 0 : summary == summaryValue(1) ? 1 : -1;
     }},
    {"record history",
     [](const auto& data) {
         // Each append rewrites the whole capped list; its last record tells which write landed.
         auto history = std::make_shared<JSONHistory<std::string>>(data / "history.json", entries);
         if (history->all().empty())
             AtomicFile::write(history->file(), Json(std::vector<std::string>(entries, "filler")).dump(1));
         history = std::make_shared<JSONHistory<std::string>>(data / "history.json", entries);
         return [history](int value) { history->append(value == 0 ? "zero" : "one"); };
     },
     [](const auto& data) {
         JSONHistory<std::string> history(data / "history.json", entries);
         const auto items = history.all();
         if (history.loadProblem() || items.size() != entries) return -1;
         return items.back() == "zero" ? 0 : items.back() == "one" ? 1 : -1;
     }},
};

}  // namespace

// Temporaries a killed writer left beside the file: proof that kills landed inside a write.
int leftoverTemporaries(const std::filesystem::path& folder) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        count += entry.path().filename().string().rfind('.', 0) == 0 ? 1 : 0;
    return count;
}

TEST(CrashSafety, EveryPersistedFileReadsAsTheOldOrTheNewValueAfterAKillDuringItsWrite) {
    std::mt19937 random(20261124);
    for (const auto& file : persistedFiles) {
        SCOPED_TRACE(file.name);
        TemporaryFolder folder;
        const std::filesystem::path data = folder.root();
        file.open(data)(0);
        // A thousand kills in all, shared among the files.
        for (int kill = 0; kill < 1000 / static_cast<int>(std::size(persistedFiles)) + 1; ++kill) {
            int started[2];
            ASSERT_EQ(::pipe(started), 0);
            const pid_t child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                try {
                    const auto write = file.open(data);
                    // The parent's clock starts once the loop does, however loaded the machine is.
                    if (::write(started[1], "s", 1) != 1) ::_exit(1);
                    for (int value = 1;; value ^= 1) write(value);
                } catch (...) {
                }
                ::_exit(1);
            }
            ::close(started[1]);
            char byte = 0;
            ASSERT_EQ(::read(started[0], &byte, 1), 1);
            ::close(started[0]);
            ::usleep(std::uniform_int_distribution<useconds_t>(0, 2000)(random));
            ::kill(child, SIGKILL);
            int status = 0;
            ::waitpid(child, &status, 0);
            ASSERT_THAT(file.read(data), AnyOf(Eq(0), Eq(1))) << "after kill " << kill;
        }
        EXPECT_GT(leftoverTemporaries(data), 0);
    }
}
