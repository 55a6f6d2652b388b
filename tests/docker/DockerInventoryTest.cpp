#include "docker/DockerInventory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace corvel {
namespace {

using ::testing::ElementsAre;

DockerContainer container(std::string id, std::string image, std::optional<std::string> project, std::string state,
                          std::optional<std::int64_t> size, std::vector<DockerMount> mounts = {},
                          std::optional<std::string> workingDirectory = std::nullopt) {
    DockerContainer result;
    result.id = std::move(id);
    result.name = result.id + "-name";
    result.image = std::move(image);
    result.composeProject = std::move(project);
    result.state = std::move(state);
    result.sizeBytes = size;
    result.mounts = std::move(mounts);
    result.composeWorkingDirectory = std::move(workingDirectory);
    return result;
}

DockerMount volumeMount(std::string name) {
    return {"volume", "/var/lib/docker/volumes/" + name + "/_data", "/data", name, true};
}
DockerMount bindMount(std::string source) {
    return {"bind", std::move(source), "/app", std::nullopt, true};
}

DockerVolume volume(std::string name, std::optional<std::int64_t> size,
                    std::optional<std::string> project = std::nullopt) {
    return {std::move(name), "local", std::move(project), size, std::nullopt, false};
}

DockerImage image(std::string id, std::string repository, std::string tag, std::int64_t size) {
    return {std::move(id), std::move(repository), std::move(tag), size, std::nullopt, std::nullopt, 0};
}

TEST(DockerDatabaseEngine, RecognisesTheLastPathComponentByPrefix) {
    // "image engine"; no engine: none. For mssql/server only "server" counts, as with the exporter.
    // clang-format off
    const char* const rows[] = {
        "library/postgres:16 PostgreSQL", "registry/acme/Timescale-HA PostgreSQL", "postgis/postgis:16-3.4 PostgreSQL",
        "redis-stack Redis", "mcr.microsoft.com/mssql/server:2022-latest", "mcr.microsoft.com/mssql-tools SQL Server",
        "mongo:7 MongoDB", "bitnami/mariadb MariaDB", "valkey/valkey:8 Valkey", "couchdb CouchDB", "minio/minio MinIO",
        "docker.elastic.co/elasticsearch/elasticsearch:8.15.0 Elasticsearch", "cassandra Cassandra", "neo4j:5 Neo4j",
        "opensearchproject/opensearch OpenSearch", "clickhouse/clickhouse-server ClickHouse", "influxdb:2 InfluxDB",
        "rabbitmq:3-management RabbitMQ", "qdrant/qdrant Qdrant", "MySQL:8.0 MySQL", "nginx",
        "postgres-exporter/thing/app", ""};
    // clang-format on
    for (const std::string row : rows) {
        const auto space = row.find(' ');
        const auto engine = space == std::string::npos ? std::nullopt : std::optional(row.substr(space + 1));
        EXPECT_EQ(DockerDatabase::engineFor(row.substr(0, space)), engine) << row;
    }
}

TEST(DockerImageReference, UntaggedImagesShowTheRepositoryAlone) {
    EXPECT_EQ(image("1", "postgres", "16", 0).reference(), "postgres:16");
    EXPECT_EQ(image("1", "<none>", "<none>", 0).reference(), "<none>");
    EXPECT_EQ(image("1", "ghcr.io/me/app", "<none>", 0).reference(), "ghcr.io/me/app");
}

TEST(DockerImageUse, ContainersFindTheirImageByReferenceLatestOrID) {
    DockerInventory inventory;
    inventory.images = {image("e47e70c59f64", "postgres", "16", 1), image("1111aaaa2222", "nginx", "latest", 2),
                        image("9999bbbb8888", "<none>", "<none>", 3)};
    EXPECT_EQ(inventory.imageUsedBy(container("a", "postgres:16", {}, "running", {})), &inventory.images[0]);
    EXPECT_EQ(inventory.imageUsedBy(container("a", "docker.io/library/postgres:16", {}, "running", {})),
              &inventory.images[0]);
    EXPECT_EQ(inventory.imageUsedBy(container("a", "nginx", {}, "running", {})), &inventory.images[1]);
    EXPECT_EQ(inventory.imageUsedBy(container("a", "nginx@sha256:0123", {}, "running", {})), &inventory.images[1]);
    EXPECT_EQ(inventory.imageUsedBy(container("a", "sha256:9999bbbb8888ffffeeee", {}, "running", {})),
              &inventory.images[2]);
    EXPECT_EQ(inventory.imageUsedBy(container("a", "postgres:15", {}, "running", {})), nullptr);
    EXPECT_EQ(inventory.imageUsedBy(container("a", "", {}, "running", {})), nullptr);
}

class DockerViews : public ::testing::Test {
protected:
    void SetUp() override {
        inventory.images = {image("img-postgres", "postgres", "16", 438000000),
                            image("img-web", "shop-web", "latest", 1210000000),
                            image("img-nginx", "nginx", "latest", 192000000)};
        inventory.volumes = {volume("shop_pgdata", 412600000, "shop"), volume("shop_unused", 1000, "shop"),
                             volume("legacy_esdata", 3400000000, "legacy"), volume("anon", std::nullopt)};
        inventory.containers = {
            container("db", "postgres:16", "shop", "running", 63, {volumeMount("shop_pgdata")}, "/Users/me/src/shop"),
            container("web", "shop-web", "shop", "running", 24600000,
                      {bindMount("/Users/me/src/shop"), bindMount("/Users/me/src/shop")}),
            container("web2", "shop-web", "shop", "exited", std::nullopt,
                      {volumeMount("shop_pgdata"), volumeMount("anon")}),
            container("solo", "nginx", std::nullopt, "exited", 1090, {bindMount("/tmp/site")}),
        };
    }

    DockerInventory inventory;
};

TEST_F(DockerViews, ProjectUsageGroupsByComposeProjectAndCountsEachThingOnce) {
    // legacy (3.4 GB of volumes, no containers left) > shop > Standalone. In shop, shop-web counts
    // once; shop_pgdata mounted twice, anon mounted and shop_unused only labelled are three volumes,
    // sizes known for two.
    const auto usage = inventory.projectUsage();
    // clang-format off
    EXPECT_THAT(usage, ElementsAre(
        DockerProjectUsage{"legacy", 0, 0, 1, 0, 3400000000, 0, {}, {}, std::nullopt},
        DockerProjectUsage{"shop", 3, 2, 3, 63 + 24600000, 412600000 + 1000, 438000000 + 1210000000,
                           {"img-postgres", "img-web"}, {"/Users/me/src/shop"}, "/Users/me/src/shop"},
        DockerProjectUsage{"Standalone", 1, 0, 0, 1090, 0, 192000000, {"img-nginx"}, {"/tmp/site"}, std::nullopt}));
    // clang-format on
    EXPECT_EQ(usage[1].totalBytes(), 63 + 24600000 + 438000000 + 1210000000 + 412600000 + 1000);
}

TEST_F(DockerViews, ProjectUsageSortIsStableForEqualTotals) {
    DockerInventory equal;
    equal.containers = {container("a", "x", "first", "running", 10), container("b", "x", "second", "running", 10),
                        container("c", "x", "third", "running", 20)};
    std::vector<std::string> names;
    for (const auto& project : equal.projectUsage()) names.push_back(project.name);
    EXPECT_THAT(names, ElementsAre("third", "first", "second"));
    EXPECT_TRUE(DockerInventory::empty().projectUsage().empty());
}

TEST_F(DockerViews, DatabasesAreContainersWithAnEngineAndTheirVolumes) {
    EXPECT_THAT(inventory.databases(),
                ElementsAre(DockerDatabase{inventory.containers[0], "PostgreSQL", {"shop_pgdata"}, 412600000}));

    DockerInventory unknownSizes;
    unknownSizes.containers = {
        container("r", "redis:7", std::nullopt, "running", {}, {volumeMount("cache"), bindMount("/x")})};
    EXPECT_THAT(unknownSizes.databases(),
                ElementsAre(DockerDatabase{unknownSizes.containers[0], "Redis", {"cache"}, 0}));
}

TEST_F(DockerViews, BindMountsPairEveryBindWithItsContainer) {
    const auto binds = inventory.bindMounts();
    ASSERT_EQ(binds.size(), 3u);
    EXPECT_EQ(binds[0].container.id, "web");
    EXPECT_EQ(binds[2].container.id, "solo");
    EXPECT_EQ(binds[2].mount.source, "/tmp/site");
}

TEST(DockerReclaimable, SumsTheEngineLinesAndGuardsOverflow) {
    DockerInventory inventory;
    EXPECT_EQ(inventory.reclaimableBytes(), 0);
    inventory.diskUsage = {{"Images", 6, 5, 3842000000, 1180000000}, {"Build Cache", 2, 0, 1673000000, 1673000000}};
    EXPECT_EQ(inventory.reclaimableBytes(), 2853000000);
    inventory.diskUsage.push_back({"Local Volumes", 1, 0, 1, std::numeric_limits<std::int64_t>::max()});
    EXPECT_EQ(inventory.reclaimableBytes(), std::nullopt);
}

}  // namespace
}  // namespace corvel
