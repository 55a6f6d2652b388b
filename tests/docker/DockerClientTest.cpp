#include "docker/DockerClient.h"

#include "DockerTestSupport.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using testing::FakeDockerHost;
using testing::ScriptedRunner;

const std::string json = "{{json .}}";
const std::string docker = "/usr/local/bin/docker";

TEST(DockerPolicy, EveryListingEndsInAFixedFormat) {
    const auto policy = DockerClient::policy(docker);
    EXPECT_EQ(policy.executable, docker);
    EXPECT_EQ(policy.allowedPrefixes, DockerClient::allowedPrefixes());
    for (const auto& prefix : policy.allowedPrefixes) EXPECT_EQ(prefix.back(), "--format");
}

TEST(DockerPolicy, RefusesEveryStateChangingCommandWithoutRunningIt) {
    // Word lists; the last two are inspect without a fixed format and not the exact listing prefix.
    // clang-format off
    const char* const refused[] = {
        "system prune -a -f", "system prune --volumes", "image prune -a", "container prune", "volume prune",
        "volume rm shop_pgdata", "network rm shop_default", "builder prune --all", "buildx prune", "rm -f abc",
        "rmi postgres:16", "stop abc", "kill abc", "start abc", "restart abc", "run --rm alpine", "exec abc sh",
        "pull postgres", "push me/app", "compose down -v", "compose rm", "container rm abc", "volume ls -q",
        "system df", "context use other", "update --restart=no abc", "--format info", "", "container inspect abc",
        "ps -a --format {{json .}}"};
    // clang-format on
    const auto policy = DockerClient::policy(docker);
    ScriptedRunner runner;
    for (const char* command : refused) {
        std::vector<std::string> arguments;
        for (std::istringstream words(command); !words.eof();)
            if (std::string word; words >> word) arguments.push_back(word);
        EXPECT_FALSE(policy.permits(arguments)) << command;
        try {
            policy.run(arguments, runner);
            ADD_FAILURE() << "ran a refused command";
        } catch (const CommandError& error) {
            EXPECT_EQ(error.kind(), CommandError::Kind::notAllowed);
            EXPECT_EQ(error.text(), arguments.empty() ? "" : arguments.front());
        }
    }
    EXPECT_TRUE(runner.calls.empty());
    EXPECT_TRUE(policy.permits({"system", "df", "-v", "--format", json}));
    EXPECT_TRUE(policy.permits({"container", "inspect", "--format", "{{json .Mounts}}", "abc", "def"}));
}

TEST(DockerLocate, SearchesPathThenTheUsualPlaces) {
    FakeDockerHost host;
    const DockerClient::Environment environment{{"PATH", "/opt/bin::/usr/bin"}, {"HOME", "/Users/me"}};
    EXPECT_EQ(DockerClient::searchFolders(environment, host),
              (std::vector<std::string>{"/opt/bin", "/usr/bin", "/usr/local/bin", "/opt/homebrew/bin",
                                        "/Users/me/.docker/bin", "/Applications/Docker.app/Contents/Resources/bin"}));

    EXPECT_EQ(DockerClient::locate(environment, host), std::nullopt);
    host.executables = {"/Applications/Docker.app/Contents/Resources/bin/docker", "/usr/local/bin/docker"};
    EXPECT_EQ(DockerClient::locate(environment, host), "/usr/local/bin/docker");
    host.executables.insert("/usr/bin/docker");
    EXPECT_EQ(DockerClient::locate(environment, host), "/usr/bin/docker");
}

TEST(DockerLocate, WithoutHomeInTheEnvironmentThePlatformHomeIsUsed) {
    FakeDockerHost host;
    host.home = "/Users/fallback";
    host.executables = {"/Users/fallback/.docker/bin/docker"};
    EXPECT_EQ(DockerClient::locate({}, host), "/Users/fallback/.docker/bin/docker");
    host.home = std::nullopt;
    EXPECT_EQ(DockerClient::locate({}, host), std::nullopt);
}

TEST(DockerLocate, NoProgramMeansNoClient) {
    FakeDockerHost host;
    ScriptedRunner runner;
    EXPECT_FALSE(DockerClient::make(runner, {}, host).has_value());
    host.executables = {"/opt/homebrew/bin/docker"};
    const auto client = DockerClient::make(runner, {}, host);
    ASSERT_TRUE(client.has_value());
    EXPECT_EQ(client->commandPolicy().executable, "/opt/homebrew/bin/docker");
}

class DockerInventoryRun : public ::testing::Test {
protected:
    void SetUp() override {
        host.files["/Users/me/Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw"] = {68719476736,
                                                                                                   41875931136};
        host.mounts = {"/", "/System/Volumes/Data"};
    }

    void answerRunning() {
        runner.answer(
            {"info", "--format", json},
            std::string(
                R"j({"ServerVersion":"27.3.1","OperatingSystem":"Docker Desktop","DockerRootDir":"/var/lib/docker"})j"));
        runner.answer({"system", "df", "-v", "--format", json},
                      std::string(R"j({"Containers":[{"ID":"aaaaaaaaaaaa","Size":"24.6MB"}],)j"
                                  R"j("Volumes":[{"Name":"pgdata","Size":"412.6MB","Links":"1"}],)j"
                                  R"j("BuildCache":[{"Size":"1.46GB"}]})j"));
        runner.answer(
            {"ps", "-a", "--no-trunc", "--format", json},
            std::string(
                R"({"ID":")" + idA +
                R"(","Names":"db","Image":"postgres:16","State":"running","Status":"Up","Labels":"","Size":"0B","Ports":""})"
                "\n"
                R"({"ID":")" +
                idB +
                R"(","Names":"web","Image":"nginx","State":"exited","Status":"Exited","Labels":"","Size":"5B","Ports":""})"
                "\n"));
        runner.answer(
            {"container", "inspect", "--format", R"j({"id":{{json .Id}},"mounts":{{json .Mounts}}})j", idA, idB},
            std::string(R"({"id":")" + idA +
                        R"(","mounts":[{"Type":"volume","Name":"pgdata","Source":"/v","Destination":"/d","RW":true}]})"
                        "\n"));
        runner.answer({"images", "--format", json},
                      std::string(R"j({"ID":"e47e70c59f64","Repository":"postgres","Tag":"16","Size":"438MB"})j"));
        runner.answer({"volume", "ls", "--format", json},
                      std::string(R"j({"Name":"pgdata","Driver":"local","Labels":"","Links":"N/A","Size":"N/A"})j"));
        runner.answer(
            {"network", "ls", "--format", json},
            std::string(R"j({"ID":"n1n1n1n1n1n1","Name":"bridge","Driver":"bridge","Scope":"local","Labels":""})j"));
        runner.answer({"compose", "ls", "-a", "--format", "json"}, std::string("[]"));
        runner.answer(
            {"system", "df", "--format", json},
            std::string(R"j({"Type":"Images","TotalCount":"1","Active":"1","Size":"438MB","Reclaimable":"0B (0%)"})j"));
    }

    DockerInventory run() {
        DockerClient client(docker, runner, host);
        return client.inventory("/Users/me", now);
    }

    const std::string idA = std::string("aaaaaaaaaaaa") + std::string(52, '1');
    const std::string idB = std::string("bbbbbbbbbbbb") + std::string(52, '2');
    const TimePoint now = *ISO8601::parse("2026-11-02T09:30:00Z");
    ScriptedRunner runner;
    FakeDockerHost host;
};

TEST_F(DockerInventoryRun, StoppedEngineYieldsOneErrorLineAndTheDiskImage) {
    runner.answer(
        {"info", "--format", json},
        CommandError::failed(
            1, "Cannot connect to the Docker daemon at unix:///var/run/docker.sock. Is the docker daemon running?"));
    const auto inventory = run();
    ASSERT_EQ(inventory.errors.size(), 1u);
    EXPECT_EQ(inventory.errors[0],
              "docker info: Command failed (1): Cannot connect to the Docker daemon at unix:///var/run/docker.sock. "
              "Is the docker daemon running?");
    EXPECT_FALSE(inventory.isReachable());
    EXPECT_EQ(runner.calls.size(), 1u);  // nothing else was asked of a dead engine
    ASSERT_TRUE(inventory.diskImage);
    EXPECT_EQ(inventory.diskImage->allocatedBytes, 41875931136);
    EXPECT_EQ(inventory.diskImage->source, "Docker Desktop default location");
    EXPECT_EQ(inventory.diskImage->volumeMountPoint, "/System/Volumes/Data");
    EXPECT_EQ(inventory.capturedAt, now);
    EXPECT_TRUE(inventory.containers.empty());
}

TEST_F(DockerInventoryRun, InfoThatIsNotAnObjectIsTheNotADictionaryError) {
    runner.answer({"info", "--format", json}, std::string("Client: Docker Engine\n"));
    const auto inventory = run();
    ASSERT_EQ(inventory.errors.size(), 1u);
    EXPECT_TRUE(inventory.errors[0].starts_with("docker info: ")) << inventory.errors[0];
    EXPECT_EQ(runner.calls.size(), 1u);
}

TEST_F(DockerInventoryRun, AnsweringEngineRunsEveryListingInOrderThroughTheLocatedProgram) {
    answerRunning();
    const auto inventory = run();
    EXPECT_TRUE(inventory.errors.empty()) << inventory.errors.front();
    std::vector<std::string> verbs;
    for (const auto& call : runner.calls) verbs.push_back(call.arguments[0] + " " + call.arguments[1]);
    EXPECT_EQ(verbs,
              (std::vector<std::string>{"info --format", "system df", "ps -a", "container inspect", "images --format",
                                        "volume ls", "network ls", "compose ls", "system df"}));
    for (const auto& call : runner.calls) EXPECT_EQ(call.executable, docker);

    // The verbose facts win over the listing's sizes where they have one (db's "0B" becomes 24.6 MB,
    // web keeps its own 5 B); mounts join their container; the reviewed file holds every field.
    testing::expectGolden("docker/scripted-inventory.json", inventory);
}

TEST_F(DockerInventoryRun, AFailedCommandAddsOneLabelledLineAndTheRestGoesOn) {
    answerRunning();
    runner.answer({"images", "--format", json}, CommandError::timedOut());
    runner.answer({"compose", "ls", "-a", "--format", "json"},
                  CommandError::failed(125, "unknown shorthand flag: 'a' in -a"));
    runner.answer({"system", "df", "-v", "--format", json}, CommandError::launchFailed("No such file or directory"));
    const auto inventory = run();
    EXPECT_EQ(inventory.errors, (std::vector<std::string>{
                                    "docker system df -v: Could not launch command: No such file or directory",
                                    "docker images: Command timed out",
                                    "docker compose ls: Command failed (125): unknown shorthand flag: 'a' in -a",
                                }));
    EXPECT_TRUE(inventory.images.empty());
    EXPECT_TRUE(inventory.composeProjects.empty());
    EXPECT_EQ(inventory.containers.size(), 2u);
    EXPECT_EQ(inventory.containers[0].sizeBytes, 0);  // no verbose facts: the listing's figure
    EXPECT_EQ(inventory.buildCacheBytes, 0);
    EXPECT_EQ(inventory.volumes.size(), 1u);
    EXPECT_EQ(inventory.diskUsage.size(), 1u);
}

TEST_F(DockerInventoryRun, UnreadableOutputIsReportedNeverSilentlyDropped) {
    answerRunning();
    const std::string goodLine =
        R"({"ID":")" + idA + R"(","Names":"db","Image":"postgres:16","State":"running","Status":"Up","Labels":""})";
    // A garbage line between good ones, and a last line cut short by a dying engine.
    runner.answer({"ps", "-a", "--no-trunc", "--format", json},
                  goodLine + "\n\x01garbage\n" + R"({"ID":")" + idB + R"(","Names":"we)");
    runner.answer({"container", "inspect", "--format", R"j({"id":{{json .Id}},"mounts":{{json .Mounts}}})j", idA},
                  std::string(R"({"id":")" + idA +
                              R"(","mounts":[]})"
                              "\n"));
    runner.answer({"system", "df", "-v", "--format", json}, std::string("{\"Containers\": ["));
    runner.answer({"images", "--format", json}, std::string("[1, 2]\n"));
    runner.answer({"compose", "ls", "-a", "--format", "json"}, std::string("not json at all"));
    const auto inventory = run();
    EXPECT_THAT(inventory.errors, ElementsAre("docker system df -v: Could not read the output: not valid JSON",
                                              "docker ps: Could not read line 2: not a JSON object",
                                              "docker ps: Could not read line 3: cut short",
                                              "docker images: Could not read line 1: not a JSON object",
                                              "docker compose ls: Could not read line 1: not a JSON object"));
    ASSERT_EQ(inventory.containers.size(), 1u);
    EXPECT_EQ(inventory.containers[0].name, "db");
}

TEST_F(DockerInventoryRun, NoContainersMeansNoInspect) {
    answerRunning();
    runner.answer({"ps", "-a", "--no-trunc", "--format", json}, std::string(""));
    const auto inventory = run();
    EXPECT_TRUE(inventory.errors.empty());
    EXPECT_FALSE(runner.ran("container"));
    EXPECT_TRUE(inventory.containers.empty());
}

TEST_F(DockerInventoryRun, AFailedInspectLeavesContainersWithoutMounts) {
    answerRunning();
    runner.answer({"container", "inspect", "--format", R"j({"id":{{json .Id}},"mounts":{{json .Mounts}}})j", idA, idB},
                  CommandError::failed(1, "Error: No such container: " + idB));
    const auto inventory = run();
    ASSERT_EQ(inventory.errors.size(), 1u);
    EXPECT_TRUE(inventory.errors[0].starts_with("docker inspect: Command failed (1): "));
    EXPECT_TRUE(inventory.containers[0].mounts.empty());
}

}  // namespace
}  // namespace corvel
