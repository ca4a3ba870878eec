#include "audit/fleet/SqliteStore.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <vector>

#include "StoreSql.h"
#include "audit/fleet/ComponentGroup.h"

namespace audit {
namespace fleet {

namespace {

// Long enough for another process's load of a large file to commit.
constexpr int kBusyTimeoutMs = 60000;

const std::vector<std::vector<const char*>> kUpgrades = {SORVIK_FLEET_SCHEMA_V1("INTEGER PRIMARY KEY")};

bool MakeParentDirectory(const std::string& path, std::string& error) {
    std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0) return true;
    std::string dir = path.substr(0, slash);
    if (mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) {
        error = "mkdir " + dir + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

}  // namespace

SqliteStore::SqliteStore(SqliteDb db, std::string path) : db_(std::move(db)), path_(std::move(path)) {}

bool SqliteStore::Open(const std::string& path, std::unique_ptr<FleetStore>& store, std::string& error) {
    if (!MakeParentDirectory(path, error)) return false;
    sqlite3* raw = nullptr;
    int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    SqliteDb db(raw);
    if (rc != SQLITE_OK) {
        error = path + ": " + (raw ? sqlite3_errmsg(raw) : sqlite3_errstr(rc));
        return false;
    }
    std::unique_ptr<SqliteStore> opened(new SqliteStore(std::move(db), path));
    if (sqlite3_busy_timeout(opened->db_.get(), kBusyTimeoutMs) != SQLITE_OK) {
        return opened->Fail("sqlite3_busy_timeout", error);
    }
    // WAL is a property of the file; when another process holds the file
    // busy while it is first created, the default journal still works.
    std::string ignored;
    opened->Exec("PRAGMA journal_mode = WAL", ignored);
    if (!opened->Exec("PRAGMA synchronous = NORMAL", error) ||
        !opened->Exec("PRAGMA foreign_keys = ON", error) || !opened->UpgradeSchema(error) ||
        !opened->PrepareLoad(error)) {
        return false;
    }
    store = std::move(opened);
    return true;
}

bool SqliteStore::Fail(const std::string& what, std::string& error) const {
    error = path_ + ": " + what + ": " + sqlite3_errmsg(db_.get());
    return false;
}

bool SqliteStore::Exec(const char* sql, std::string& error) {
    char* message = nullptr;
    if (sqlite3_exec(db_.get(), sql, nullptr, nullptr, &message) != SQLITE_OK) {
        error = path_ + ": " + (message ? message : "sqlite3_exec failed");
        sqlite3_free(message);
        return false;
    }
    return true;
}

bool SqliteStore::UpgradeSchema(std::string& error) {
    // IMMEDIATE takes the write lock first, so two programs creating the
    // schema at once run one after the other.
    if (!Exec("BEGIN IMMEDIATE", error)) return false;
    std::string stepError;
    SqliteStatement exists;
    int version = 0;
    bool ok = exists.Prepare(
        db_.get(), "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = 'schema_version'", stepError);
    int rc = ok ? exists.Step(stepError) : SQLITE_ERROR;
    ok = rc == SQLITE_ROW || rc == SQLITE_DONE;
    if (ok && rc == SQLITE_ROW) {
        SqliteStatement read;
        ok =
            read.Prepare(db_.get(), sql::kSchemaVersionRead, stepError) && read.Step(stepError) == SQLITE_ROW;
        if (ok) version = static_cast<int>(read.Int(0));
    }
    if (ok && version > kSchemaVersion) {
        Exec("ROLLBACK", stepError);
        error = path_ + ": the fleet database has schema version " + std::to_string(version) +
                ", newer than this sorvik-audit knows (" + std::to_string(kSchemaVersion) +
                "); use a newer sorvik-audit";
        return false;
    }
    for (int next = version + 1; ok && next <= kSchemaVersion; ++next) {
        for (const char* statement : kUpgrades[next - 1]) {
            if (!(ok = Exec(statement, stepError))) break;
        }
    }
    if (ok && version < kSchemaVersion) {
        SqliteStatement mark;
        ok = mark.Prepare(db_.get(), "DELETE FROM schema_version", stepError) && mark.Run(stepError) &&
             mark.Prepare(db_.get(), "INSERT INTO schema_version (version) VALUES (?)", stepError);
        if (ok) {
            mark.Bind(1, std::int64_t{kSchemaVersion});
            ok = mark.Run(stepError);
        }
    }
    if (!ok) {
        std::string ignored;
        Exec("ROLLBACK", ignored);
        error = path_ + ": schema: " + stepError;
        return false;
    }
    return Exec("COMMIT", error);
}

bool SqliteStore::PrepareLoad(std::string& error) {
    std::string why;
    bool ok =
        insertHost_.Prepare(db_.get(), "INSERT INTO hosts (name) VALUES (?) ON CONFLICT (name) DO NOTHING",
                            why) &&
        insertCollection_.Prepare(
            db_.get(),
            "INSERT INTO collections (host_id, collected_at, collector_version, content_hash, source, "
            "system_id, "
            "os_name, os_vendor, os_code, os_arch, os_major, os_minor, os_sp_major, os_sp_minor, os_build) "
            "SELECT id, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ? FROM hosts WHERE name = ? "
            "ON CONFLICT (host_id, content_hash) DO NOTHING RETURNING id",
            why) &&
        insertComponent_.Prepare(
            db_.get(),
            "INSERT INTO components (collection_id, position, group_key, name, component_type, component_id, "
            "component_instance, fqdd, vendor_id, device_id, sub_vendor_id, sub_device_id, version) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
            why) &&
        insertFailure_.Prepare(
            db_.get(),
            "INSERT INTO module_failures (collection_id, position, module, message) VALUES (?, ?, ?, ?)",
            why);
    if (!ok) error = path_ + ": " + why;
    return ok;
}

void SqliteStore::AddCollections(const std::vector<CollectionRecord>& records,
                                 std::vector<AddResult>& results) {
    results.assign(records.size(), AddResult());
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (!AddOne(records[i], results[i].added, results[i].error) && results[i].error.empty()) {
            results[i].error = path_ + ": not stored";
        }
    }
}

bool SqliteStore::AddOne(const CollectionRecord& record, bool& added, std::string& error) {
    added = false;
    if (!Exec("BEGIN IMMEDIATE", error)) return false;
    std::string why;
    if (!InsertRows(record, added, why)) {
        std::string ignored;
        Exec("ROLLBACK", ignored);
        added = false;
        error = path_ + ": " + why;
        return false;
    }
    if (!Exec("COMMIT", error)) {
        std::string ignored;
        Exec("ROLLBACK", ignored);
        added = false;
        return false;
    }
    return true;
}

bool SqliteStore::InsertRows(const CollectionRecord& record, bool& added, std::string& error) {
    insertHost_.Reset();
    insertHost_.Bind(1, record.host);
    if (!insertHost_.Run(error)) return false;

    const Inventory& inventory = record.inventory;
    const OperatingSystem& os = inventory.os;
    insertCollection_.Reset();
    int column = 1;
    insertCollection_.Bind(column++, record.collectedAt);
    for (const std::string* text :
         {&record.collectorVersion, &record.contentHash, &record.source, &inventory.systemID, &os.name,
          &os.osVendor, &os.osCode, &os.osArch, &os.majorVersion, &os.minorVersion, &os.spMajorVersion,
          &os.spMinorVersion, &os.buildNumber, &record.host}) {
        insertCollection_.Bind(column++, *text);
    }
    int rc = insertCollection_.Step(error);
    if (rc == SQLITE_DONE) return true;  // the host holds this document already
    if (rc != SQLITE_ROW) return false;
    std::int64_t collection = insertCollection_.Int(0);
    if (!insertCollection_.Run(error)) return false;

    std::int64_t position = 0;
    for (const Component& c : inventory.components) {
        insertComponent_.Reset();
        insertComponent_.Bind(1, collection);
        insertComponent_.Bind(2, position++);
        insertComponent_.Bind(3, ComponentGroup(inventory.systemID, c));
        column = 4;
        for (const std::string* text :
             {&c.name, &c.componentType, &c.componentID, &c.componentInstance, &c.fqdd, &c.vendorID,
              &c.deviceID, &c.subVendorID, &c.subDeviceID, &c.version}) {
            insertComponent_.Bind(column++, *text);
        }
        if (!insertComponent_.Run(error)) return false;
    }
    position = 0;
    for (const ModuleFailure& failure : record.failures) {
        insertFailure_.Reset();
        insertFailure_.Bind(1, collection);
        insertFailure_.Bind(2, position++);
        insertFailure_.Bind(3, failure.module);
        insertFailure_.Bind(4, failure.message);
        if (!insertFailure_.Run(error)) return false;
    }
    added = true;
    return true;
}

bool SqliteStore::Drift(double maxSharePercent, std::vector<VersionCount>& versions,
                        std::vector<OutlierHost>& outliers, std::string& error) {
    versions.clear();
    outliers.clear();
    SqliteStatement query;
    std::string why;
    if (!query.Prepare(db_.get(), sql::kDrift, why)) return Fail(why, error);
    query.Bind(1, maxSharePercent);
    int rc;
    while ((rc = query.Step(why)) == SQLITE_ROW) {
        if (query.IsNull(4)) {
            versions.push_back({query.Text(0), query.Text(1), query.Int(2), query.Int(3)});
        } else {
            outliers.push_back({query.Text(0), query.Text(1), query.Text(4)});
        }
    }
    if (rc != SQLITE_DONE) {
        error = path_ + ": drift: " + why;
        return false;
    }
    return true;
}

bool SqliteStore::LatestCollections(std::vector<CollectionRecord>& collections, std::string& error) {
    collections.clear();
    std::map<std::int64_t, std::size_t> byId;
    std::string why;
    SqliteStatement query;
    // One read transaction, so the three queries see the same collections.
    bool ok = Exec("BEGIN", error);
    if (!ok) return false;
    ok = query.Prepare(db_.get(), sql::kLatestCollections, why);
    int rc = SQLITE_ERROR;
    while (ok && (rc = query.Step(why)) == SQLITE_ROW) {
        CollectionRecord record;
        record.host = query.Text(1);
        record.collectedAt = query.Int(2);
        record.collectorVersion = query.Text(3);
        record.contentHash = query.Text(4);
        record.source = query.Text(5);
        record.inventory.source = record.source;
        record.inventory.systemID = query.Text(6);
        OperatingSystem& os = record.inventory.os;
        int column = 7;
        for (std::string* text :
             {&os.name, &os.osVendor, &os.osCode, &os.osArch, &os.majorVersion, &os.minorVersion,
              &os.spMajorVersion, &os.spMinorVersion, &os.buildNumber}) {
            *text = query.Text(column++);
        }
        byId[query.Int(0)] = collections.size();
        collections.push_back(std::move(record));
    }
    ok = ok && rc == SQLITE_DONE && query.Prepare(db_.get(), sql::kLatestComponents, why);
    while (ok && (rc = query.Step(why)) == SQLITE_ROW) {
        Component c;
        int column = 1;
        for (std::string* text : {&c.name, &c.componentType, &c.componentID, &c.componentInstance, &c.fqdd,
                                  &c.vendorID, &c.deviceID, &c.subVendorID, &c.subDeviceID, &c.version}) {
            *text = query.Text(column++);
        }
        collections[byId[query.Int(0)]].inventory.components.push_back(std::move(c));
    }
    ok = ok && rc == SQLITE_DONE && query.Prepare(db_.get(), sql::kLatestFailures, why);
    while (ok && (rc = query.Step(why)) == SQLITE_ROW) {
        collections[byId[query.Int(0)]].failures.push_back({query.Text(1), query.Text(2)});
    }
    ok = ok && rc == SQLITE_DONE;
    std::string ignored;
    Exec("COMMIT", ignored);
    if (!ok) {
        collections.clear();
        error = path_ + ": " + why;
    }
    return ok;
}

bool SqliteStore::Counts(StoreCounts& counts, std::string& error) {
    SqliteStatement query;
    std::string why;
    if (!query.Prepare(db_.get(), sql::kCounts, why) || query.Step(why) != SQLITE_ROW) {
        error = path_ + ": " + why;
        return false;
    }
    counts = {query.Int(0), query.Int(1), query.Int(2), query.Int(3)};
    return true;
}

}  // namespace fleet
}  // namespace audit
