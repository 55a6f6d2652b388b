// The recorded Docker machines run through the real client, parser and locator.
#include "command/RecordedCommandRunner.h"
#include "docker/DockerClient.h"
#include "docker/RecordedDockerHost.h"
#include "storage/MachineStorage.h"
#include "storage/RecordedMachine.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

const std::filesystem::path machines = std::filesystem::path(CORVEL_FIXTURES_DIR) / "machines";

struct Replay {
    explicit Replay(const std::string& name)
        : machine(RecordedMachine::load(machines / name)),
          runner(RecordedCommandRunner::load(machines / name)),
          host(machine.document, machine.directory, mountPoints(machine),
               [this](const std::string& executable) { return runner.hasExecutable(executable); }) {}

    // The volumes discovery finds in the recording, as the command line passes them.
    static std::vector<std::string> mountPoints(const RecordedMachine& machine) {
        RecordedCommandRunner discoveryRunner = RecordedCommandRunner::load(machine.directory);
        std::vector<std::string> result;
        for (const auto& volume : MachineStorage::replay(discoveryRunner, machine, machine.capturedAt).volumes)
            result.push_back(volume.mountPoint);
        return result;
    }

    DockerInventory inventory() {
        const DockerClient::Environment environment{{"HOME", machine.home}, {"PATH", "/usr/bin:/bin"}};
        auto client = DockerClient::make(runner, environment, host);
        EXPECT_TRUE(client.has_value());
        return client->inventory(machine.home, machine.capturedAt);
    }

    RecordedMachine machine;
    RecordedCommandRunner runner;
    RecordedDockerHost host;
};

// Each recorded machine's inventory and what is derived from it, in one reviewed file: a running
// engine with compose projects, databases and a disk image on another volume; a stopped engine
// (one error line, the disk image still measured); a native Linux engine and its data folder.
TEST(RecordedDockerMachines, InventoriesMatchTheReviewedCopy) {
    Json rendered = Json::object();
    for (const char* name : {"mac-docker-running", "mac-docker-stopped", "linux-docker-engine"}) {
        Replay replay(name);
        const auto inventory = replay.inventory();
        EXPECT_EQ(Json(inventory).get<DockerInventory>(), inventory) << name;
        const auto reclaimable = inventory.reclaimableBytes();
        Json& entry = rendered[name];
        entry["inventory"] = inventory;
        entry["isReachable"] = inventory.isReachable();
        entry["reclaimableBytes"] = reclaimable ? Json(*reclaimable) : Json();
        entry["projectUsage"] = inventory.projectUsage();
        entry["databases"] = inventory.databases();
        entry["bindMounts"] = inventory.bindMounts();
    }
    testing::expectGolden("docker/recorded-machines.json", rendered);
}

TEST(RecordedDockerHostFile, MalformedFactsNameTheFile) {
    const auto folder = std::filesystem::temp_directory_path() / "velmora-docker-host-test";
    std::filesystem::create_directories(folder);
    const auto build = [&](const Json& machine) {
        return RecordedDockerHost(machine, folder, {}, [](const std::string&) { return false; });
    };
    EXPECT_NO_THROW(build(Json{{"platform", "linux"}}));
    EXPECT_EQ(build(Json{{"platform", "linux"}}).platform(), Platform::linux);
    try {
        build(Json{{"dockerHost", {{"files", {{"/x", {{"apparentBytes", 1}}}}}}}});
        ADD_FAILURE() << "accepted a file without its allocated size";
    } catch (const RecordingError& error) {
        EXPECT_THAT(error.what(), AllOf(HasSubstr((folder / "machine.json").string()), HasSubstr("allocatedBytes")));
    }
    EXPECT_THROW(build(Json{{"dockerHost", {{"textFiles", {{"/s.json", "missing.json"}}}}}}), RecordingError);
    EXPECT_THROW(build(Json{{"dockerHost", "nope"}}), RecordingError);

    std::ofstream(folder / "settings.json") << R"j({"DataFolder":"/d"})j";
    const auto host =
        build(Json{{"dockerHost",
                    {{"textFiles", {{"/s.json", "settings.json"}}},
                     {"folders", {{"/var/lib/docker", {{"apparentBytes", 2}, {"allocatedBytes", 1}}}}}}}});
    EXPECT_EQ(host.readTextFile("/s.json"), R"j({"DataFolder":"/d"})j");
    EXPECT_EQ(host.readTextFile("/other"), std::nullopt);
    EXPECT_EQ(host.folderFacts("/var/lib/docker"), (DockerFileFacts{2, 1}));
    EXPECT_EQ(host.regularFileFacts("/var/lib/docker"), std::nullopt);
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace corvel
