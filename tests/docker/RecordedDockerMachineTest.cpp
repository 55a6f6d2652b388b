// The recorded Docker machines run through the real client, parser and locator.
#include "command/RecordedCommandRunner.h"
#include "docker/DockerClient.h"
#include "docker/RecordedDockerHost.h"
#include "storage/MachineStorage.h"
#include "storage/RecordedMachine.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace corvel {
namespace {

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

TEST(RecordedDockerMachines, RunningEngineWithComposeProjectsAndADatabase) {
    Replay replay("mac-docker-running");
    const auto inventory = replay.inventory();
    EXPECT_TRUE(inventory.errors.empty()) << inventory.errors.front();
    EXPECT_EQ(inventory.serverVersion, "27.3.1");
    EXPECT_EQ(inventory.operatingSystem, "Docker Desktop");
    ASSERT_EQ(inventory.containers.size(), 5u);
    EXPECT_EQ(inventory.containers[1].name, "shop-web-1");
    EXPECT_EQ(inventory.containers[1].sizeBytes, 24600000);
    EXPECT_EQ(inventory.containers[1].ports, "0.0.0.0:3000->3000/tcp");
    EXPECT_EQ(inventory.images.size(), 6u);
    EXPECT_EQ(inventory.images[0].uniqueBytes, 438000000);
    EXPECT_EQ(inventory.images[5].reference(), "<none>");
    EXPECT_EQ(inventory.volumes.size(), 4u);
    EXPECT_EQ(inventory.networks.size(), 5u);
    ASSERT_EQ(inventory.composeProjects.size(), 2u);
    EXPECT_EQ(inventory.composeProjects[1].configFiles.size(), 2u);
    EXPECT_EQ(inventory.diskUsage.size(), 4u);
    EXPECT_EQ(inventory.reclaimableBytes(), 1180000000 + 2290 + 3400000000 + 1673000000);
    EXPECT_EQ(inventory.buildCacheBytes, 1672500000);
    ASSERT_TRUE(inventory.diskImage);
    EXPECT_EQ(inventory.diskImage->path, "/Volumes/Projects/DockerDesktop/Docker.raw");
    EXPECT_EQ(inventory.diskImage->source, "Docker Desktop setting DataFolder");
    EXPECT_EQ(inventory.diskImage->volumeMountPoint, "/Volumes/Projects");

    const auto usage = inventory.projectUsage();
    ASSERT_EQ(usage.size(), 4u);
    EXPECT_EQ(usage[0].name, "legacy");  // 3.4 GB of volumes left behind
    EXPECT_EQ(usage[1].name, "blog");
    EXPECT_EQ(usage[2].name, "shop");
    EXPECT_EQ(usage[2].containers, 3);
    EXPECT_EQ(usage[2].runningContainers, 3);
    EXPECT_EQ(usage[2].volumes, 2);
    EXPECT_EQ(usage[2].workingDirectory, "/Users/sam/src/shop");
    EXPECT_EQ(usage[3].name, "Standalone");

    const auto databases = inventory.databases();
    ASSERT_EQ(databases.size(), 3u);  // postgres, redis, mysql
    EXPECT_EQ(databases[0].engine, "PostgreSQL");
    EXPECT_EQ(databases[0].volumeBytes, 412600000);
    EXPECT_EQ(databases[1].engine, "Redis");
    EXPECT_EQ(databases[2].engine, "MySQL");
    EXPECT_EQ(inventory.bindMounts().size(), 2u);
}

TEST(RecordedDockerMachines, StoppedEngineStillMeasuresTheDiskImage) {
    Replay replay("mac-docker-stopped");
    const auto inventory = replay.inventory();
    ASSERT_EQ(inventory.errors.size(), 1u);
    EXPECT_TRUE(
        inventory.errors[0].starts_with("docker info: Command failed (1): Cannot connect to the Docker daemon"));
    EXPECT_FALSE(inventory.isReachable());
    ASSERT_TRUE(inventory.diskImage);
    EXPECT_EQ(inventory.diskImage->allocatedBytes, 41875931136);
    EXPECT_EQ(inventory.diskImage->source, "Docker Desktop default location");
    EXPECT_EQ(inventory.diskImage->volumeMountPoint, "/");
}

TEST(RecordedDockerMachines, NativeLinuxEngineMeasuresItsDataFolder) {
    Replay replay("linux-docker-engine");
    const auto inventory = replay.inventory();
    EXPECT_TRUE(inventory.errors.empty());
    EXPECT_EQ(inventory.operatingSystem, "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(inventory.containers.size(), 5u);
    EXPECT_EQ(inventory.bindMounts()[0].mount.source, "/home/me/src/shop");
    ASSERT_TRUE(inventory.diskImage);
    EXPECT_EQ(*inventory.diskImage,
              (DockerDiskImage{"/var/lib/docker", 14563921408, 12081618944, "/", "Docker engine data root"}));
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
        EXPECT_NE(std::string(error.what()).find((folder / "machine.json").string()), std::string::npos)
            << error.what();
        EXPECT_NE(std::string(error.what()).find("allocatedBytes"), std::string::npos) << error.what();
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
