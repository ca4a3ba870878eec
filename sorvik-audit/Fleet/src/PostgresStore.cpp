#include "audit/fleet/PostgresStore.h"

#include <cstdlib>
#include <map>
#include <utility>

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

// One element of an array literal, quoted so that any text survives.
void AppendArrayElement(std::string& array, const std::string& element) {
    if (array.size() > 1) array += ',';
    array += '"';
    for (char c : element) {
        if (c == '"' || c == '\\') array += '\\';
        array += c;
    }
    array += '"';
}

// Names of the statements a load runs, prepared once a connection.
constexpr const char* kAddHost = "sorvik_add_host";
constexpr const char* kAddCollection = "sorvik_add_collection";

// The collection and, when it is new, its components and module failures.
constexpr const char* kInsertCollection =
    "WITH c AS (INSERT INTO collections (host_id, collected_at, collector_version, content_hash, source, "
    "system_id, os_name, os_vendor, os_code, os_arch, os_major, os_minor, os_sp_major, os_sp_minor, "
    "os_build) "
    "SELECT id, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11, $12, $13, $14, $15 FROM hosts WHERE name = $1 "
    "ON CONFLICT (host_id, content_hash) DO NOTHING RETURNING id), "
    "p AS (INSERT INTO components (collection_id, position, group_key, name, component_type, component_id, "
    "component_instance, fqdd, vendor_id, device_id, sub_vendor_id, sub_device_id, version) "
    "SELECT c.id, r.* FROM c, unnest($16::integer[], $17::text[], $18::text[], $19::text[], $20::text[], "
    "$21::text[], $22::text[], $23::text[], $24::text[], $25::text[], $26::text[], $27::text[]) AS r), "
    "f AS (INSERT INTO module_failures (collection_id, position, module, message) "
    "SELECT c.id, r.* FROM c, unnest($28::integer[], $29::text[], $30::text[]) AS r) "
    "SELECT id FROM c";

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
    // A load lost to a server crash is redone by loading again, which adds
    // only what is missing; not waiting for each commit's flush keeps a load
    // of thousands of files from waiting on the disk thousands of times.
    if (!opened->Run("SET client_min_messages = warning", PGRES_COMMAND_OK, error) ||
        !opened->Run("SET synchronous_commit = off", PGRES_COMMAND_OK, error) ||
        !opened->UpgradeSchema(error) || !opened->Prepare(error)) {
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

bool PostgresStore::Prepare(std::string& error) {
    const std::pair<const char*, const char*> statements[] = {
        {kAddHost, "INSERT INTO hosts (name) VALUES ($1) ON CONFLICT (name) DO NOTHING"},
        {kAddCollection, kInsertCollection}};
    for (const auto& statement : statements) {
        PgResult result(PQprepare(connection_.get(), statement.first, statement.second, 0, nullptr));
        if (!result || PQresultStatus(result.get()) != PGRES_COMMAND_OK) {
            error = name_ + ": " + Trimmed(PQerrorMessage(connection_.get()));
            return false;
        }
    }
    return true;
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

void PostgresStore::AddCollections(const std::vector<CollectionRecord>& records,
                                   std::vector<AddResult>& results) {
    results.assign(records.size(), AddResult());
    if (records.empty()) return;
    if (PQenterPipelineMode(connection_.get()) != 1) {
        for (AddResult& result : results) {
            result.error = name_ + ": PQenterPipelineMode: " + Trimmed(PQerrorMessage(connection_.get()));
        }
        return;
    }
    // Everything is sent before anything is read: the server works through
    // the records while they travel. Each record's sync ends its implicit
    // transaction, so a record is stored whole or not at all, and a failed
    // one leaves the next untouched.
    std::size_t sent = 0;
    while (sent < records.size() && SendRecord(records[sent])) ++sent;
    std::string sendError = sent < records.size() ? Trimmed(PQerrorMessage(connection_.get())) : "";
    if (sent > 0 && PQflush(connection_.get()) != 0) sendError = Trimmed(PQerrorMessage(connection_.get()));
    for (std::size_t i = 0; i < sent; ++i) {
        std::string why;
        if (!ReadRecord(results[i].added, why)) results[i].error = name_ + ": " + why;
    }
    for (std::size_t i = sent; i < records.size(); ++i) results[i].error = name_ + ": " + sendError;
    if (PQexitPipelineMode(connection_.get()) != 1) {
        // Unread results are left only when the connection broke; say so on
        // any record that seemed stored.
        std::string why = name_ + ": PQexitPipelineMode: " + Trimmed(PQerrorMessage(connection_.get()));
        for (AddResult& result : results) {
            if (result.error.empty()) result.error = why;
            result.added = false;
        }
    }
}

bool PostgresStore::SendRecord(const CollectionRecord& record) {
    const Inventory& inventory = record.inventory;
    const OperatingSystem& os = inventory.os;
    std::vector<std::string> params = {record.host,
                                       std::to_string(record.collectedAt),
                                       record.collectorVersion,
                                       record.contentHash,
                                       record.source,
                                       inventory.systemID,
                                       os.name,
                                       os.osVendor,
                                       os.osCode,
                                       os.osArch,
                                       os.majorVersion,
                                       os.minorVersion,
                                       os.spMajorVersion,
                                       os.spMinorVersion,
                                       os.buildNumber};
    std::vector<std::string> columns(12, "{");
    std::size_t position = 0;
    for (const Component& c : inventory.components) {
        const std::string* fields[] = {&c.name,        &c.componentType, &c.componentID, &c.componentInstance,
                                       &c.fqdd,        &c.vendorID,      &c.deviceID,    &c.subVendorID,
                                       &c.subDeviceID, &c.version};
        std::string group = ComponentGroup(inventory.systemID, c);
        AppendArrayElement(columns[0], std::to_string(position++));
        AppendArrayElement(columns[1], group);
        for (std::size_t i = 0; i < 10; ++i) AppendArrayElement(columns[i + 2], *fields[i]);
    }
    std::vector<std::string> failures(3, "{");
    position = 0;
    for (const ModuleFailure& failure : record.failures) {
        AppendArrayElement(failures[0], std::to_string(position++));
        AppendArrayElement(failures[1], failure.module);
        AppendArrayElement(failures[2], failure.message);
    }
    for (std::string& column : columns) params.push_back(column + "}");
    for (std::string& column : failures) params.push_back(column + "}");

    // The collection's statement is a statement of its own, so its snapshot
    // holds a host another load committed while the host's insert waited for it.
    return Send(kAddHost, {record.host}) && Send(kAddCollection, params) &&
           PQpipelineSync(connection_.get()) == 1;
}

bool PostgresStore::ReadRecord(bool& added, std::string& error) {
    added = false;
    PgResult inserted;
    for (ExecStatusType expected : {PGRES_COMMAND_OK, PGRES_TUPLES_OK}) {
        // Each statement's result, then the null that ends it.
        PgResult result(PQgetResult(connection_.get()));
        if ((!result || PQresultStatus(result.get()) != expected) && error.empty()) {
            error = result && PQresultStatus(result.get()) != PGRES_PIPELINE_ABORTED
                        ? Trimmed(PQresultErrorMessage(result.get()))
                        : Trimmed(PQerrorMessage(connection_.get()));
            if (error.empty()) error = "not stored";
        }
        if (!result) return false;  // the connection is gone
        while (PgResult(PQgetResult(connection_.get()))) {
        }
        if (expected == PGRES_TUPLES_OK) inserted = std::move(result);
    }
    PgResult sync(PQgetResult(connection_.get()));
    if ((!sync || PQresultStatus(sync.get()) != PGRES_PIPELINE_SYNC) && error.empty()) {
        error = Trimmed(PQerrorMessage(connection_.get()));
        if (error.empty()) error = "no end of the record's transaction";
    }
    if (!error.empty()) return false;
    // No row: the host holds this document already.
    added = PQntuples(inserted.get()) == 1;
    return true;
}

bool PostgresStore::Send(const char* statement, const std::vector<std::string>& params) {
    std::vector<const char*> values;
    std::vector<int> lengths;
    for (const std::string& param : params) {
        values.push_back(param.c_str());
        lengths.push_back(static_cast<int>(param.size()));
    }
    return PQsendQueryPrepared(connection_.get(), statement, static_cast<int>(params.size()), values.data(),
                               lengths.data(), nullptr, 0) == 1;
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
