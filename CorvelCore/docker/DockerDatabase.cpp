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

}  // namespace corvel
