#include "docker/DockerDatabase.h"

#include "common/Text.h"

#include <array>

namespace corvel {

std::optional<std::string> DockerDatabase::engineFor(std::string_view image) {
    struct Entry {
        std::string_view prefix;
        std::string_view engine;
    };
    // Order matters: "postgis" must be tried before "postgres".
    static constexpr std::array<Entry, 19> table{{
        {"postgis", "PostgreSQL"},    {"postgres", "PostgreSQL"},   {"timescale", "PostgreSQL"},
        {"mysql", "MySQL"},           {"mariadb", "MariaDB"},       {"mongo", "MongoDB"},
        {"redis", "Redis"},           {"valkey", "Valkey"},         {"elasticsearch", "Elasticsearch"},
        {"opensearch", "OpenSearch"}, {"clickhouse", "ClickHouse"}, {"cassandra", "Cassandra"},
        {"neo4j", "Neo4j"},           {"influxdb", "InfluxDB"},     {"rabbitmq", "RabbitMQ"},
        {"mssql", "SQL Server"},      {"couchdb", "CouchDB"},       {"minio", "MinIO"},
        {"qdrant", "Qdrant"},
    }};
    const auto lowered = toLower(image);
    const auto slash = lowered.rfind('/');
    const std::string_view name =
        slash == std::string::npos ? std::string_view(lowered) : std::string_view(lowered).substr(slash + 1);
    for (const auto& entry : table)
        if (startsWith(name, entry.prefix)) return std::string(entry.engine);
    return std::nullopt;
}

void to_json(Json& j, const DockerDatabase& database) {
    j = Json{{"container", database.container},
             {"engine", database.engine},
             {"volumeNames", database.volumeNames},
             {"volumeBytes", database.volumeBytes}};
}

void from_json(const Json& j, DockerDatabase& database) {
    database.container = required<DockerContainer>(j, "container");
    database.engine = required<std::string>(j, "engine");
    database.volumeNames = required<std::vector<std::string>>(j, "volumeNames");
    database.volumeBytes = required<std::int64_t>(j, "volumeBytes");
}

}  // namespace corvel
