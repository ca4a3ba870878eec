#pragma once
// The queries both stores run with the same text: the SQL they share is
// plain enough for SQLite and PostgreSQL alike.

namespace audit {
namespace fleet {
namespace sql {

// Each host's latest collection: the latest collection time, and of two
// collections of the same time the one loaded last.
#define SORVIK_FLEET_LATEST                                                                            \
    "latest AS (SELECT id, host_id FROM (SELECT id, host_id, ROW_NUMBER() OVER (PARTITION BY host_id " \
    "ORDER BY collected_at DESC, id DESC) AS r FROM collections) ranked WHERE r = 1)"

// Rows of two kinds: (group, version, hosts, group hosts, NULL) for every
// version of a group with more than one version, and (group, version, 0, 0,
// host) for each host running a version below the share given as $1 percent.
// Distinct hosts are counted only in the groups that run more than one
// version, found first by a cheap grouping of every component.
inline constexpr const char* kDrift =
    "WITH " SORVIK_FLEET_LATEST
    ", versions AS (SELECT p.group_key, p.version FROM components p JOIN latest l ON p.collection_id = l.id "
    "GROUP BY p.group_key, p.version)"
    ", drifting AS (SELECT group_key FROM versions GROUP BY group_key HAVING COUNT(*) > 1)"
    ", running AS (SELECT DISTINCT p.group_key, p.version, l.host_id FROM components p "
    "JOIN latest l ON p.collection_id = l.id WHERE p.group_key IN (SELECT group_key FROM drifting))"
    ", per_version AS (SELECT group_key, version, COUNT(*) AS hosts FROM running GROUP BY group_key, version)"
    ", per_group AS (SELECT group_key, COUNT(DISTINCT host_id) AS hosts FROM running GROUP BY group_key)"
    " SELECT v.group_key, v.version, v.hosts, g.hosts, NULL FROM per_version v "
    "JOIN per_group g ON g.group_key = v.group_key"
    " UNION ALL SELECT r.group_key, r.version, 0, 0, h.name FROM running r "
    "JOIN per_version v ON v.group_key = r.group_key AND v.version = r.version "
    "JOIN per_group g ON g.group_key = r.group_key JOIN hosts h ON h.id = r.host_id "
    "WHERE v.hosts * 100.0 < CAST($1 AS DOUBLE PRECISION) * g.hosts";

inline constexpr const char* kLatestCollections =
    "WITH " SORVIK_FLEET_LATEST
    " SELECT c.id, h.name, c.collected_at, c.collector_version, c.content_hash, c.source, c.system_id, "
    "c.os_name, c.os_vendor, c.os_code, c.os_arch, c.os_major, c.os_minor, c.os_sp_major, c.os_sp_minor, "
    "c.os_build FROM latest l JOIN collections c ON c.id = l.id JOIN hosts h ON h.id = c.host_id ORDER BY "
    "h.name";

inline constexpr const char* kLatestComponents =
    "WITH " SORVIK_FLEET_LATEST
    " SELECT p.collection_id, p.name, p.component_type, p.component_id, p.component_instance, p.fqdd, "
    "p.vendor_id, p.device_id, p.sub_vendor_id, p.sub_device_id, p.version FROM latest l "
    "JOIN components p ON p.collection_id = l.id ORDER BY p.collection_id, p.position";

inline constexpr const char* kLatestFailures = "WITH " SORVIK_FLEET_LATEST
                                               " SELECT f.collection_id, f.module, f.message FROM latest l "
                                               "JOIN module_failures f ON f.collection_id = l.id "
                                               "ORDER BY f.collection_id, f.position";

#undef SORVIK_FLEET_LATEST

inline constexpr const char* kCounts =
    "SELECT (SELECT COUNT(*) FROM hosts), (SELECT COUNT(*) FROM collections), (SELECT COUNT(*) FROM "
    "components), "
    "(SELECT COUNT(*) FROM module_failures)";

inline constexpr const char* kSchemaVersionRead = "SELECT MAX(version) FROM schema_version";

// The statements that create schema version 1, with the id column type of
// each database put in for ID.
#define SORVIK_FLEET_SCHEMA_V1(ID)                                                                           \
    {                                                                                                        \
        "CREATE TABLE schema_version (version INTEGER NOT NULL)",                                            \
            "CREATE TABLE hosts (id " ID ", name TEXT NOT NULL UNIQUE)",                                     \
            "CREATE TABLE collections (id " ID                                                               \
            ", host_id BIGINT NOT NULL REFERENCES hosts (id), "                                              \
            "collected_at BIGINT NOT NULL, collector_version TEXT NOT NULL, content_hash TEXT NOT NULL, "    \
            "source TEXT NOT NULL, system_id TEXT NOT NULL, os_name TEXT NOT NULL, os_vendor TEXT NOT "      \
            "NULL, "                                                                                         \
            "os_code TEXT NOT NULL, os_arch TEXT NOT NULL, os_major TEXT NOT NULL, os_minor TEXT NOT NULL, " \
            "os_sp_major TEXT NOT NULL, os_sp_minor TEXT NOT NULL, os_build TEXT NOT NULL, "                 \
            "UNIQUE (host_id, content_hash))",                                                               \
            "CREATE INDEX collections_by_time ON collections (host_id, collected_at, id)",                   \
            "CREATE TABLE components (collection_id BIGINT NOT NULL REFERENCES collections (id), "           \
            "position INTEGER NOT NULL, group_key TEXT NOT NULL, name TEXT NOT NULL, component_type TEXT "   \
            "NOT NULL, "                                                                                     \
            "component_id TEXT NOT NULL, component_instance TEXT NOT NULL, fqdd TEXT NOT NULL, "             \
            "vendor_id TEXT NOT NULL, device_id TEXT NOT NULL, sub_vendor_id TEXT NOT NULL, "                \
            "sub_device_id TEXT NOT NULL, version TEXT NOT NULL, PRIMARY KEY (collection_id, position))",    \
            "CREATE TABLE module_failures (collection_id BIGINT NOT NULL REFERENCES collections (id), "      \
            "position INTEGER NOT NULL, module TEXT NOT NULL, message TEXT NOT NULL, "                       \
            "PRIMARY KEY (collection_id, position))"                                                         \
    }

}  // namespace sql
}  // namespace fleet
}  // namespace audit
