#include "docker/DockerDiskImageLocator.h"

#include "DockerTestSupport.h"

#include <gtest/gtest.h>

namespace corvel {
namespace {

using testing::FakeDockerHost;

const std::string home = "/Users/me";
const std::string groupContainer = home + "/Library/Group Containers/group.com.docker";
const std::string macDefault = home + "/Library/Containers/com.docker.docker/Data/vms/0/data";

TEST(DockerDiskImageMac, DefaultLocationWithMountPointOfTheDataVolume) {
    FakeDockerHost host;
    host.mounts = {"/", "/System/Volumes/Data", "/Volumes/Work"};
    host.files[macDefault + "/Docker.raw"] = {68719476736, 41875931136};
    const auto image = DockerDiskImageLocator::locate(home, host);
    ASSERT_TRUE(image);
    EXPECT_EQ(*image, (DockerDiskImage{macDefault + "/Docker.raw", 68719476736, 41875931136, "/System/Volumes/Data",
                                       "Docker Desktop default location"}));
}

TEST(DockerDiskImageMac, RawIsPreferredToQcow2AndQcow2IsFoundAlone) {
    FakeDockerHost host;
    host.files[macDefault + "/Docker.qcow2"] = {2, 1};
    EXPECT_EQ(DockerDiskImageLocator::locate(home, host)->path, macDefault + "/Docker.qcow2");
    host.files[macDefault + "/Docker.raw"] = {4, 3};
    EXPECT_EQ(DockerDiskImageLocator::locate(home, host)->path, macDefault + "/Docker.raw");
}

TEST(DockerDiskImageMac, SettingsNameTheFolderBeforeTheDefault) {
    FakeDockerHost host;
    host.mounts = {"/", "/Volumes/Work", "/Volumes/Work Backup"};
    host.texts[groupContainer + "/settings-store.json"] =
        R"j({"DataFolder": "/Volumes/Work/Docker", "MemoryMiB": 8092})j";
    host.texts[groupContainer + "/settings.json"] = R"j({"dataFolder": "/Volumes/Old"})j";
    host.files[macDefault + "/Docker.raw"] = {1, 1};
    host.files["/Volumes/Work/Docker/Docker.raw"] = {137438953472, 19327352832};

    const auto candidates = DockerDiskImageLocator::candidates(home, host);
    EXPECT_EQ(candidates,
              (std::vector<DockerImageCandidate>{{"/Volumes/Work/Docker", "Docker Desktop setting DataFolder"},
                                                 {"/Volumes/Old", "Docker Desktop setting dataFolder"},
                                                 {macDefault, "Docker Desktop default location"}}));

    const auto image = DockerDiskImageLocator::locate(home, host);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->path, "/Volumes/Work/Docker/Docker.raw");
    EXPECT_EQ(image->source, "Docker Desktop setting DataFolder");
    EXPECT_EQ(image->volumeMountPoint, "/Volumes/Work");  // not "/Volumes/Work Backup", not "/"
}

TEST(DockerDiskImageMac, EverySettingsKeyIsTriedInOrderAndBadSettingsAreIgnored) {
    FakeDockerHost host;
    host.texts[groupContainer + "/settings-store.json"] =
        R"j({"diskImageLocation": "/d", "CustomWslDistroDir": "/c", "dataFolder": "/b", "DataFolder": 7, "other": "/x"})j";
    host.texts[groupContainer + "/settings.json"] = "{not json";
    const auto candidates = DockerDiskImageLocator::candidates(home, host);
    EXPECT_EQ(candidates, (std::vector<DockerImageCandidate>{{"/b", "Docker Desktop setting dataFolder"},
                                                             {"/c", "Docker Desktop setting CustomWslDistroDir"},
                                                             {"/d", "Docker Desktop setting diskImageLocation"},
                                                             {macDefault, "Docker Desktop default location"}}));
}

TEST(DockerDiskImageMac, AStaleSettingFallsBackToTheDefaultAndNothingFoundIsNone) {
    FakeDockerHost host;
    host.texts[groupContainer + "/settings-store.json"] = R"j({"DataFolder": "/Volumes/Gone"})j";
    EXPECT_EQ(DockerDiskImageLocator::locate(home, host), std::nullopt);
    host.files[macDefault + "/Docker.raw"] = {5, 4};
    EXPECT_EQ(DockerDiskImageLocator::locate(home, host)->source, "Docker Desktop default location");
    // A Mac never walks a native engine folder.
    FakeDockerHost bare;
    bare.folders["/var/lib/docker"] = {1, 1};
    EXPECT_EQ(DockerDiskImageLocator::locate(home, bare, std::string("/var/lib/docker")), std::nullopt);
}

TEST(DockerDiskImageLinux, DesktopImageFirstThenTheEngineDataRoot) {
    FakeDockerHost host;
    host.platformName = Platform::linux;
    host.home = "/home/me";
    host.mounts = {"/", "/home", "/var/lib/docker"};
    host.folders["/var/lib/docker"] = {9000000000, 8000000000};
    host.folders["/srv/docker"] = {3, 2};

    auto image = DockerDiskImageLocator::locate("/home/me", host);
    ASSERT_TRUE(image);
    EXPECT_EQ(*image, (DockerDiskImage{"/var/lib/docker", 9000000000, 8000000000, "/var/lib/docker",
                                       "Docker engine data root"}));

    image = DockerDiskImageLocator::locate("/home/me", host, std::string("/srv/docker"));
    EXPECT_EQ(image->path, "/srv/docker");
    EXPECT_EQ(image->volumeMountPoint, "/");

    host.texts["/home/me/.docker/desktop/settings-store.json"] = R"j({"dataFolder": "/data/dd"})j";
    host.files["/data/dd/Docker.raw"] = {100, 50};
    image = DockerDiskImageLocator::locate("/home/me", host);
    EXPECT_EQ(image->path, "/data/dd/Docker.raw");
    EXPECT_EQ(image->source, "Docker Desktop setting dataFolder");

    host.files.clear();
    host.files["/home/me/.docker/desktop/vms/0/data/Docker.raw"] = {100, 50};
    EXPECT_EQ(DockerDiskImageLocator::locate("/home/me", host)->volumeMountPoint, "/home");
}

TEST(DockerDiskImageLinux, RootlessEngineWhenTheSystemRootIsUnreadable) {
    FakeDockerHost host;
    host.platformName = Platform::linux;
    host.folders["/home/me/.local/share/docker"] = {7, 6};
    const auto image = DockerDiskImageLocator::locate("/home/me", host);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->source, "Docker rootless engine data root");
}

TEST(DockerMountPoint, LongestContainingMountPointOnComponentBoundaries) {
    const std::vector<std::string> mounts{"/", "/Volumes/Work", "/Volumes/Work Backup", "/Volumes/Work/Inner/"};
    using DockerDiskImageLocator::mountPointHolding;
    EXPECT_EQ(mountPointHolding("/Volumes/Work/Docker.raw", mounts), "/Volumes/Work");
    EXPECT_EQ(mountPointHolding("/Volumes/Work Backup/x", mounts), "/Volumes/Work Backup");
    EXPECT_EQ(mountPointHolding("/Volumes/Workshop/x", mounts), "/");
    EXPECT_EQ(mountPointHolding("/Volumes/Work/Inner/x", mounts), "/Volumes/Work/Inner/");
    EXPECT_EQ(mountPointHolding("/Volumes/Work", mounts), "/Volumes/Work");
    EXPECT_EQ(mountPointHolding("/x", {"/Volumes/Work"}), std::nullopt);
    EXPECT_EQ(mountPointHolding("relative/x", {"/"}), std::nullopt);
}

}  // namespace
}  // namespace corvel
