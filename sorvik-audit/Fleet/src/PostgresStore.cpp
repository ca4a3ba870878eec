#include "audit/fleet/PostgresStore.h"

#include <cstdlib>
#include <map>

#include "StoreSql.h"
#include "audit/fleet/ComponentGroup.h"

namespace audit {
namespace fleet {

namespace {

const std::vector<std::vector<const char*>> kUpgrades = {
    SORVIK_FLEET_SCHEMA_V1("BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY")};

// Any constant will do, as long as every sorvik-audit takes the same one.
constexpr const char* kSchemaLock = "SELECT pg_advisory_xact_lock(7239461802)";

std::string Trimmed(const char* message) {
    std::string text = message ? message : "";
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
    return text;
}

// One field of COPY's text format.
void AppendCopyField(std::string& rows, const std::string& field) {
    for (char c : field) {
        switch (c) {
            case '\\':
                rows += "\\\\";
                break;
            case '\t':
                rows += "\\t";
                break;
            case '\n':
                rows += "\\n";
                break;
            case '\r':
                rows += "\\r";
                break;
            default:
                rows += c;
        }
    }
}

std::string Value(const PgResult& result, int row, int column) {
    return std::string(PQgetvalue(result.get(), row, column),
                       static_cast<std::size_t>(PQgetlength(result.get(), row, column)));
}

std::int64_t IntValue(const PgResult& result, int row, int column) {
    return std::strtoll(PQgetvalue(result.get(), row, column), nullptr, 10);
}

}  // namespace

PostgresStore::PostgresStore(PgConnection connection, std::string name)
    : connection_(std::move(connection)), name_(std::move(name)) {}

bool PostgresStore::Open(const std::string& conninfo, std::unique_ptr<FleetStore>& store,
                         std::string& error) {
    PgConnection connection(PQconnectdb(conninfo.c_str()));
    if (!connection) {
        error = "PostgreSQL: PQconnectdb: out of memory";
        return false;
    }
    if (PQstatus(connection.get()) != CONNECTION_OK) {
        // The message names host and database; the conninfo may hold a password.
        error = "PostgreSQL: " + Trimmed(PQerrorMessage(connection.get()));
        return false;
    }
    std::string name = std::string("PostgreSQL database ") + PQdb(connection.get());
    std::unique_ptr<PostgresStore> opened(new PostgresStore(std::move(connection), name));
    if (!opened->Run("SET client_min_messages = warning", PGRES_COMMAND_OK, error) ||
        !opened->UpgradeSchema(error)) {
        return false;
    }
    store = std::move(opened);
    return true;
}

bool PostgresStore::Run(const char* sql, ExecStatusType expected, std::string& error, PgResult* result) {
    return RunParams(sql, {}, expected, error, result);
}

bool PostgresStore::RunParams(const char* sql, const std::vector<std::string>& params,
                              ExecStatusType expected, std::string& error, PgResult* result) {
    std::vector<const char*> values;
    std::vector<int> lengths;
    for (const std::string& param : params) {
        values.push_back(param.c_str());
        lengths.push_back(static_cast<int>(param.size()));
    }
    PgResult answer(PQexecParams(connection_.get(), sql, static_cast<int>(params.size()), nullptr,
                                 values.data(), lengths.data(), nullptr, 0));
    if (!answer || PQresultStatus(answer.get()) != expected) {
        error = name_ + ": " + Trimmed(PQerrorMessage(connection_.get()));
        return false;
    }
    if (result) *result = std::move(answer);
    return true;
}

bool PostgresStore::Copy(const char* sql, const std::string& rows, std::string& error) {
    if (!Run(sql, PGRES_COPY_IN, error)) return false;
    bool sent = PQputCopyData(connection_.get(), rows.data(), static_cast<int>(rows.size())) == 1;
    std::string why = sent ? "" : Trimmed(PQerrorMessage(connection_.get()));
    if (PQputCopyEnd(connection_.get(), sent ? nullptr : "sorvik-audit: sending rows failed") != 1 && sent) {
        why = Trimmed(PQerrorMessage(connection_.get()));
        sent = false;
    }
    // The COPY's own result, then the null that ends it.
    PgResult result(PQgetResult(connection_.get()));
    bool ok = sent && result && PQresultStatus(result.get()) == PGRES_COMMAND_OK;
    if (!ok && why.empty()) why = Trimmed(PQerrorMessage(connection_.get()));
    while (PgResult(PQgetResult(connection_.get()))) {
    }
    if (!ok) error = name_ + ": " + why;
    return ok;
}

bool PostgresStore::Rollback(const std::string& why, std::string& error) {
    std::string ignored;
    Run("ROLLBACK", PGRES_COMMAND_OK, ignored);
    error = why;
    return false;
}

bool PostgresStore::UpgradeSchema(std::string& error) {
    std::string why;
    PgResult result;
    if (!Run("BEGIN", PGRES_COMMAND_OK, error)) return false;
    if (!Run(kSchemaLock, PGRES_TUPLES_OK, why) ||
        !Run("SELECT to_regclass('schema_version') IS NOT NULL", PGRES_TUPLES_OK, why, &result)) {
        return Rollback(why, error);
    }
    int version = 0;
    if (Value(result, 0, 0) == "t") {
        if (!Run(sql::kSchemaVersionRead, PGRES_TUPLES_OK, why, &result)) return Rollback(why, error);
        version = static_cast<int>(IntValue(result, 0, 0));
    }
    if (version > kSchemaVersion) {
        return Rollback(name_ + ": the fleet database has schema version " + std::to_string(version) +
                            ", newer than this sorvik-audit knows (" + std::to_string(kSchemaVersion) +
                            "); use a newer sorvik-audit",
                        error);
    }
    for (int next = version + 1; next <= kSchemaVersion; ++next) {
        for (const char* statement : kUpgrades[next - 1]) {
            if (!Run(statement, PGRES_COMMAND_OK, why)) return Rollback(why, error);
        }
    }
    if (version < kSchemaVersion && (!Run("DELETE FROM schema_version", PGRES_COMMAND_OK, why) ||
                                     !RunParams("INSERT INTO schema_version (version) VALUES ($1)",
                                                {std::to_string(kSchemaVersion)}, PGRES_COMMAND_OK, why))) {
        return Rollback(why, error);
    }
    return Run("COMMIT", PGRES_COMMAND_OK, error);
}

bool PostgresStore::AddCollection(const CollectionRecord& record, bool& added, std::string& error) {
    added = false;
    // A load lost to a server crash is redone by loading again, which adds
    // only what is missing; not waiting for each commit's flush keeps a load
    // of thousands of files from waiting on the disk thousands of times.
    if (!Run("BEGIN", PGRES_COMMAND_OK, error)) return false;
    std::string why;
    if (!Run("SET LOCAL synchronous_commit = off", PGRES_COMMAND_OK, why) ||
        !InsertRows(record, added, why)) {
        added = false;
        return Rollback(why, error);
    }
    if (!Run("COMMIT", PGRES_COMMAND_OK, error)) {
        added = false;
        return false;
    }
    return true;
}

bool PostgresStore::InsertRows(const CollectionRecord& record, bool& added, std::string& error) {
    if (!RunParams("INSERT INTO hosts (name) VALUES ($1) ON CONFLICT (name) DO NOTHING", {record.host},
                   PGRES_COMMAND_OK, error)) {
        return false;
    }
    // A statement of its own, so its snapshot holds a host another load
    // committed while the insert above waited for it.
    const Inventory& inventory = record.inventory;
    const OperatingSystem& os = inventory.os;
    PgResult inserted;
    if (!RunParams(
            "INSERT INTO collections (host_id, collected_at, collector_version, content_hash, source, "
            "system_id, os_name, os_vendor, os_code, os_arch, os_major, os_minor, os_sp_major, "
            "os_sp_minor, os_build) SELECT id, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11, $12, $13, $14, $15 "
            "FROM hosts WHERE name = $1 ON CONFLICT (host_id, content_hash) DO NOTHING RETURNING id",
            {record.host, std::to_string(record.collectedAt), record.collectorVersion, record.contentHash,
             record.source, inventory.systemID, os.name, os.osVendor, os.osCode, os.osArch, os.majorVersion,
             os.minorVersion, os.spMajorVersion, os.spMinorVersion, os.buildNumber},
            PGRES_TUPLES_OK, error, &inserted)) {
        return false;
    }
    if (PQntuples(inserted.get()) == 0) return true;  // the host holds this document already
    std::string collection = Value(inserted, 0, 0);

    std::string rows;
    std::size_t position = 0;
    for (const Component& c : inventory.components) {
        rows += collection;
        rows += '\t';
        rows += std::to_string(position++);
        rows += '\t';
        AppendCopyField(rows, ComponentGroup(inventory.systemID, c));
        for (const std::string* text :
             {&c.name, &c.componentType, &c.componentID, &c.componentInstance, &c.fqdd, &c.vendorID,
              &c.deviceID, &c.subVendorID, &c.subDeviceID, &c.version}) {
            rows += '\t';
            AppendCopyField(rows, *text);
        }
        rows += '\n';
    }
    if (!rows.empty() &&
        !Copy("COPY components (collection_id, position, group_key, name, component_type, component_id, "
              "component_instance, fqdd, vendor_id, device_id, sub_vendor_id, sub_device_id, version) FROM "
              "STDIN",
              rows, error)) {
        return false;
    }
    rows.clear();
    position = 0;
    for (const ModuleFailure& failure : record.failures) {
        rows += collection + '\t' + std::to_string(position++) + '\t';
        AppendCopyField(rows, failure.module);
        rows += '\t';
        AppendCopyField(rows, failure.message);
        rows += '\n';
    }
    if (!rows.empty() &&
        !Copy("COPY module_failures (collection_id, position, module, message) FROM STDIN", rows, error)) {
        return false;
    }
    added = true;
    return true;
}

bool PostgresStore::Drift(double maxSharePercent, std::vector<VersionCount>& versions,
                          std::vector<OutlierHost>& outliers, std::string& error) {
    versions.clear();
    outliers.clear();
    PgResult result;
    if (!RunParams(sql::kDrift, {std::to_string(maxSharePercent)}, PGRES_TUPLES_OK, error, &result))
        return false;
    for (int row = 0, rows = PQntuples(result.get()); row < rows; ++row) {
        if (PQgetisnull(result.get(), row, 4)) {
            versions.push_back({Value(result, row, 0), Value(result, row, 1), IntValue(result, row, 2),
                                IntValue(result, row, 3)});
        } else {
            outliers.push_back({Value(result, row, 0), Value(result, row, 1), Value(result, row, 4)});
        }
    }
    return true;
}

bool PostgresStore::LatestCollections(std::vector<CollectionRecord>& collections, std::string& error) {
    collections.clear();
    std::string why;
    PgResult heads, components, failures;
    // One snapshot for the three queries.
    if (!Run("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY", PGRES_COMMAND_OK, error)) return false;
    if (!Run(sql::kLatestCollections, PGRES_TUPLES_OK, why, &heads) ||
        !Run(sql::kLatestComponents, PGRES_TUPLES_OK, why, &components) ||
        !Run(sql::kLatestFailures, PGRES_TUPLES_OK, why, &failures)) {
        return Rollback(why, error);
    }
    if (!Run("COMMIT", PGRES_COMMAND_OK, error)) return false;

    std::map<std::string, std::size_t> byId;
    for (int row = 0, rows = PQntuples(heads.get()); row < rows; ++row) {
        CollectionRecord record;
        record.host = Value(heads, row, 1);
        record.collectedAt = IntValue(heads, row, 2);
        record.collectorVersion = Value(heads, row, 3);
        record.contentHash = Value(heads, row, 4);
        record.source = Value(heads, row, 5);
        record.inventory.source = record.source;
        record.inventory.systemID = Value(heads, row, 6);
        OperatingSystem& os = record.inventory.os;
        int column = 7;
        for (std::string* text :
             {&os.name, &os.osVendor, &os.osCode, &os.osArch, &os.majorVersion, &os.minorVersion,
              &os.spMajorVersion, &os.spMinorVersion, &os.buildNumber}) {
            *text = Value(heads, row, column++);
        }
        byId[Value(heads, row, 0)] = collections.size();
        collections.push_back(std::move(record));
    }
    for (int row = 0, rows = PQntuples(components.get()); row < rows; ++row) {
        Component c;
        int column = 1;
        for (std::string* text : {&c.name, &c.componentType, &c.componentID, &c.componentInstance, &c.fqdd,
                                  &c.vendorID, &c.deviceID, &c.subVendorID, &c.subDeviceID, &c.version}) {
            *text = Value(components, row, column++);
        }
        collections[byId[Value(components, row, 0)]].inventory.components.push_back(std::move(c));
    }
    for (int row = 0, rows = PQntuples(failures.get()); row < rows; ++row) {
        collections[byId[Value(failures, row, 0)]].failures.push_back(
            {Value(failures, row, 1), Value(failures, row, 2)});
    }
    return true;
}

bool PostgresStore::Counts(StoreCounts& counts, std::string& error) {
    PgResult result;
    if (!Run(sql::kCounts, PGRES_TUPLES_OK, error, &result)) return false;
    counts = {IntValue(result, 0, 0), IntValue(result, 0, 1), IntValue(result, 0, 2), IntValue(result, 0, 3)};
    return true;
}

}  // namespace fleet
}  // namespace audit
