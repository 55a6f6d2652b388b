#include "docker/DockerParser.h"
#include "storage/DiskutilParseError.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>

namespace corvel {
namespace {

using DockerParser::size;

constexpr auto largest = std::numeric_limits<std::int64_t>::max();

// Decimal units, exact, rounded half away from zero; text after the first blank ignored; huge
// figures clamped; anything unreadable gives none.
TEST(DockerSizes, EachTextHasItsByteCount) {
    // clang-format off
    const std::pair<const char*, std::int64_t> rows[] = {
        {"1.2GB", 1200000000}, {"512kB", 512000}, {"512KB", 512000}, {"0B", 0}, {"3TB", 3000000000000},
        {"412.6MB", 412600000}, {"1.5B", 2}, {"2.4B", 2}, {"0.0005kB", 1} /* exactly half a byte */, {"0.0004kB", 0},
        {"1234", 1234} /* a bare whole number is bytes */, {".5kB", 500}, {"7.kB", 7000}, {"1.2GB (45%)", 1200000000},
        {"  24.6MB\n", 24600000}, {"0B (virtual 1.21GB)", 0}};
    // clang-format on
    for (const auto& [text, bytes] : rows) EXPECT_EQ(size(text), bytes) << text;
    for (const char* text :
         {"99999999999TB", "123456789012345678901234567890", "9223372036854775807B", "9223372036854775.807kB"})
        EXPECT_EQ(size(text), largest) << text;
    // "3.5" has no unit and is not whole; binary units are not the engine's.
    for (const char* text : {"N/A", "", "   ", "abc", "3.5 GB", "1.5", "GB", "1.2.3GB", "-1GB", "12MiB", "1e3B"})
        EXPECT_EQ(size(text), std::nullopt) << text;
}

TEST(DockerLabels, SplitAtCommasThenAtTheFirstEquals) {
    const auto labels = DockerParser::labels(
        "com.docker.compose.project=shop,url=https://x.example/a=b,files=/a.yml,/b.yml,empty=,=orphan");
    EXPECT_EQ(labels.at("com.docker.compose.project"), "shop");
    EXPECT_EQ(labels.at("url"), "https://x.example/a=b");
    EXPECT_EQ(labels.at("files"), "/a.yml");  // the part "/b.yml" has no "=" and is dropped
    EXPECT_EQ(labels.at("empty"), "");
    EXPECT_EQ(labels.size(), 4u);
    EXPECT_TRUE(DockerParser::labels("").empty());
}

TEST(DockerLines, KeepOnlyLinesThatAreJsonObjects) {
    const auto lines = DockerParser::lines("{\"a\":1}\r\nnot json\n[1,2]\n\n  {\"b\":\"x\"}  \n{\"c\":");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]["a"], 1);
    EXPECT_EQ(lines[1]["b"], "x");
}

TEST(DockerIDs, ShortIDsMatchTheFullIDTheyBegin) {
    const std::string full = "4f1c2b3a9d8e7f6a5b4c3d2e1f0a9b8c7d6e5f4a3b2c1d0e9f8a7b6c5d4e3f2a";
    EXPECT_TRUE(DockerParser::sameID(full, "4f1c2b3a9d8e"));
    EXPECT_TRUE(DockerParser::sameID("sha256:" + full, full));
    EXPECT_TRUE(DockerParser::sameID("4f1c2b3a9d8e", "sha256:" + full));
    EXPECT_FALSE(DockerParser::sameID(full, "4f1c2b"));  // too short to be an ID
    EXPECT_FALSE(DockerParser::sameID(full, "5f1c2b3a9d8e"));
    EXPECT_FALSE(DockerParser::sameID("", ""));
}

TEST(DockerEngineInfo, ReadsVersionSystemAndRoot) {
    const auto info = DockerParser::engineInfo(
        R"j({"ServerVersion":"27.3.1","OperatingSystem":"Docker Desktop","DockerRootDir":"/var/lib/docker","NCPU":10})j");
    EXPECT_EQ(info.serverVersion, "27.3.1");
    EXPECT_EQ(info.operatingSystem, "Docker Desktop");
    EXPECT_EQ(info.dockerRootDir, "/var/lib/docker");
}

TEST(DockerEngineInfo, BlankFactsAreAbsentAndANonObjectIsAnError) {
    // What the client prints when the engine does not answer.
    const auto info = DockerParser::engineInfo(R"j({"ID":"","ServerVersion":"","OperatingSystem":""})j");
    EXPECT_EQ(info, DockerEngineInfo{});
    EXPECT_THROW(DockerParser::engineInfo("[1]"), DiskutilParseError);
    EXPECT_THROW(DockerParser::engineInfo("Cannot connect"), DiskutilParseError);
    EXPECT_THROW(DockerParser::engineInfo(""), DiskutilParseError);
}

TEST(DockerContainers, ReadsFieldsAndComposeLabels) {
    const auto containers = DockerParser::containers(
        R"j({"ID":"abc123abc123ff","Names":"shop-db-1","Image":"postgres:16","State":"running","Status":"Up 3 hours",)j"
        R"j("Labels":"com.docker.compose.project=shop,com.docker.compose.service=db,)j"
        R"j(com.docker.compose.project.working_dir=/Users/me/src/shop,com.docker.compose.project.config_files=/a.yml,/b.yml",)j"
        R"j("Size":"63B (virtual 438MB)","Ports":"0.0.0.0:5432-\u003e5432/tcp"})j"
        "\n"
        R"j({"Names":"no-id","Image":"x"})j"
        "\n"
        R"j({"ID":"--format","Names":"flag","Image":"x"})j"
        "\n"
        R"j({"ID":"def456def456aa","Names":"loner","Image":"nginx","State":"exited","Status":"Exited (0)","Labels":"","Size":"N/A","Ports":""})j"
        "\n");
    ASSERT_EQ(containers.size(), 2u);
    // clang-format off
    EXPECT_EQ(containers[0], (DockerContainer{"abc123abc123ff", "shop-db-1", "postgres:16", "running", "Up 3 hours", "shop",
                                              "db", "/Users/me/src/shop", 63, "0.0.0.0:5432->5432/tcp", {}}));
    // clang-format on
    const auto& loner = containers[1];
    EXPECT_EQ(loner.composeProject, std::nullopt);
    EXPECT_EQ(loner.sizeBytes, std::nullopt);
}

TEST(DockerMounts, ReadsInspectLinesByContainer) {
    const auto mounts = DockerParser::mounts(
        R"j({"id":"aaa","mounts":[{"Type":"volume","Name":"shop_pgdata","Source":"/var/lib/docker/volumes/shop_pgdata/_data",)j"
        R"j("Destination":"/var/lib/postgresql/data","Driver":"local","Mode":"z","RW":true,"Propagation":""},)j"
        R"j({"Type":"bind","Source":"/Users/me/src/shop","Destination":"/app","Mode":"ro","RW":false,"Propagation":"rprivate"}]})j"
        "\n"
        R"j({"id":"bbb","mounts":null})j"
        "\n"
        R"j({"mounts":[]})j"
        "\n");
    EXPECT_EQ(
        mounts,
        (std::map<std::string, std::vector<DockerMount>>{
            {"aaa",
             {{"volume", "/var/lib/docker/volumes/shop_pgdata/_data", "/var/lib/postgresql/data", "shop_pgdata", true},
              {"bind", "/Users/me/src/shop", "/app", std::nullopt, false}}},
            {"bbb", {}}}));
}

TEST(DockerImages, VerboseFactsFillSharedUniqueAndContainerCounts) {
    const auto verbose = DockerParser::verbose(
        R"j({"Images":[{"ID":"sha256:e47e70c59f64aaaabbbbccccddddeeeeffff0000111122223333444455556666",)j"
        R"j("SharedSize":"12.5MB","UniqueSize":"425.5MB","Containers":"2"}]})j");
    ASSERT_TRUE(verbose);
    const auto images = DockerParser::images(
        R"j({"ID":"e47e70c59f64","Repository":"postgres","Tag":"16","Size":"438MB","SharedSize":"N/A","UniqueSize":"N/A","Containers":"N/A"})j"
        "\n"
        R"j({"ID":"0123456789ab","Repository":"\u003cnone\u003e","Tag":"\u003cnone\u003e","Size":"1.18GB","SharedSize":"N/A","UniqueSize":"N/A","Containers":"N/A"})j"
        "\n"
        R"j({"Repository":"no-id","Tag":"x","Size":"1B"})j",
        verbose);
    ASSERT_EQ(images.size(), 2u);
    EXPECT_EQ(images[0], (DockerImage{"e47e70c59f64", "postgres", "16", 438000000, 12500000, 425500000, 2}));
    EXPECT_EQ(images[0].reference(), "postgres:16");
    EXPECT_EQ(images[1].sharedBytes, std::nullopt);
    EXPECT_EQ(images[1].containers, 0);
    EXPECT_EQ(images[1].reference(), "<none>");
}

TEST(DockerImages, WithoutVerboseFactsTheListingIsUsedAsIs) {
    const auto images = DockerParser::images(
        R"j({"ID":"e47e70c59f64","Repository":"postgres","Tag":"16","Size":"438MB","SharedSize":"1kB","UniqueSize":"N/A","Containers":"3"})j",
        std::nullopt);
    ASSERT_EQ(images.size(), 1u);
    EXPECT_EQ(images[0].sharedBytes, 1000);
    EXPECT_EQ(images[0].uniqueBytes, std::nullopt);
    EXPECT_EQ(images[0].containers, 3);
}

TEST(DockerVolumes, ReadsProjectAnonymityAndListingFigures) {
    const auto volumes = DockerParser::volumes(
        R"j({"Driver":"local","Labels":"com.docker.compose.project=shop,com.docker.compose.volume=pgdata","Links":"N/A","Name":"shop_pgdata","Size":"N/A"})j"
        "\n"
        R"j({"Driver":"local","Labels":"com.docker.volume.anonymous=","Links":"1","Name":"9f8e7d","Size":"88B"})j"
        "\n"
        R"j({"Driver":"local","Labels":"","Name":"","Size":"1B"})j");
    EXPECT_EQ(volumes, (std::vector<DockerVolume>{{"shop_pgdata", "local", "shop", std::nullopt, std::nullopt, false},
                                                  {"9f8e7d", "local", std::nullopt, 88, 1, true}}));
}

TEST(DockerNetworks, ReadsNetworksWithTheirProject) {
    const auto networks = DockerParser::networks(
        R"j({"Driver":"bridge","ID":"1a2b3c4d5e6f","Labels":"com.docker.compose.network=default,com.docker.compose.project=shop","Name":"shop_default","Scope":"local"})j"
        "\n"
        R"j({"Driver":"host","ID":"6f5e4d3c2b1a","Labels":"","Name":"host","Scope":"local"})j");
    EXPECT_EQ(networks, (std::vector<DockerNetwork>{{"1a2b3c4d5e6f", "shop_default", "bridge", "local", "shop"},
                                                    {"6f5e4d3c2b1a", "host", "host", "local", std::nullopt}}));
}

TEST(DockerComposeProjects, ConfigFilesDropEmptyParts) {
    const auto projects = DockerParser::composeProjects(
        R"j([{"Name":"shop","Status":"running(2)","ConfigFiles":"a.yml,,b.yml"},{"Status":"x"},)j"
        R"j({"Name":"blog","Status":"exited(1)","ConfigFiles":""}])j");
    EXPECT_EQ(projects, (std::vector<DockerComposeProject>{{"shop", "running(2)", {"a.yml", "b.yml"}},
                                                           {"blog", "exited(1)", {}}}));
}

TEST(DockerComposeProjects, AcceptsOneObjectPerLineAndIgnoresGarbage) {
    EXPECT_EQ(DockerParser::composeProjects("{\"Name\":\"a\",\"Status\":\"running(1)\",\"ConfigFiles\":\"/x.yml\"}\n"
                                            "{\"Name\":\"b\",\"Status\":\"exited(1)\",\"ConfigFiles\":\"/y.yml\"}\n")
                  .size(),
              2u);
    EXPECT_TRUE(DockerParser::composeProjects("unknown shorthand flag: 'a' in -a").empty());
    EXPECT_TRUE(DockerParser::composeProjects("[]").empty());
}

TEST(DockerDiskUsage, ReadsCountsSizesAndReclaimable) {
    const auto lines = DockerParser::diskUsage(
        R"j({"Active":"5","Reclaimable":"1.18GB (30%)","Size":"3.842GB","TotalCount":"6","Type":"Images"})j"
        "\n"
        R"j({"Active":"0","Reclaimable":"N/A","Size":"0B","TotalCount":"0","Type":"Build Cache"})j"
        "\n"
        R"j({"Active":"1","Size":"1B"})j");
    EXPECT_EQ(lines, (std::vector<DockerDiskUsageLine>{{"Images", 6, 5, 3842000000, 1180000000},
                                                       {"Build Cache", 0, 0, 0, 0}}));
}

TEST(DockerVerboseFacts, ContainerAndVolumeSizesAndBuildCache) {
    const auto verbose = DockerParser::verbose(
        R"j({"Containers":[{"ID":"abc123abc123","Size":"24.6MB"},{"ID":"def","Size":"N/A"}],)j"
        R"j("Volumes":[{"Name":"shop_pgdata","Size":"412.6MB","Links":"1"},{"Name":"orphan","Size":"N/A","Links":"0"}],)j"
        R"j("BuildCache":[{"ID":"q","Size":"1.46GB"},{"ID":"w","Size":"212.5MB"},{"ID":"e","Size":"N/A"}]})j");
    const auto sizes = DockerParser::containerSizes(verbose);
    EXPECT_EQ(sizes.size(), 1u);
    EXPECT_EQ(sizes.at("abc123abc123"), 24600000);
    const auto volumes = DockerParser::volumeSizes(verbose);
    EXPECT_EQ(volumes.at("shop_pgdata"), (DockerVolumeFacts{412600000, 1}));
    EXPECT_EQ(volumes.at("orphan"), (DockerVolumeFacts{std::nullopt, 0}));
    EXPECT_EQ(DockerParser::buildCacheBytes(verbose), 1672500000);
}

TEST(DockerVerboseFacts, MissingOrMalformedFactsGiveNothing) {
    EXPECT_EQ(DockerParser::verbose("not json"), std::nullopt);
    EXPECT_EQ(DockerParser::verbose("[]"), std::nullopt);
    EXPECT_TRUE(DockerParser::containerSizes(std::nullopt).empty());
    EXPECT_EQ(DockerParser::buildCacheBytes(std::nullopt), 0);
    EXPECT_EQ(DockerParser::buildCacheBytes(DockerParser::verbose(R"j({"BuildCache":"oops"})j")), 0);
    // Nonsense figures saturate instead of wrapping or stopping the program.
    EXPECT_EQ(DockerParser::buildCacheBytes(
                  DockerParser::verbose(R"j({"BuildCache":[{"Size":"99999999999TB"},{"Size":"99999999999TB"}]})j")),
              std::numeric_limits<std::int64_t>::max());
}

}  // namespace
}  // namespace corvel
