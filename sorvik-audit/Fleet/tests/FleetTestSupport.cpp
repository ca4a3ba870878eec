#include "FleetTestSupport.h"

#include <libpq-fe.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "PostgresServer.h"
#include "audit/fleet/PgHandle.h"
#include "audit/fleet/SqliteStatement.h"

namespace audit {
namespace fleet {
namespace testing {

void WriteFile(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    ASSERT_TRUE(out.good()) << path;
}

Component TestComponent(const std::string& type, const std::string& name, const std::string& fqdd,
                        const std::string& vendor, const std::string& device, const std::string& version) {
    Component c;
    c.componentType = type;
    c.name = name;
    c.fqdd = fqdd;
    c.vendorID = vendor;
    c.deviceID = device;
    c.version = version;
    return c;
}

std::string TestDocument(const std::string& systemID, const std::vector<Component>& components,
                         const std::string& time) {
    std::string text = "system " + systemID + "\n";
    if (!time.empty()) text += "time " + time + "\n";
    for (const Component& c : components) {
        text += "component " + c.componentType + "|" + c.name + "|" + c.fqdd + "|" + c.vendorID + "|" +
                c.deviceID + "|" + c.version + "\n";
    }
    return text;
}

namespace {

std::vector<std::string> Fields(const std::string& text) {
    std::vector<std::string> fields;
    std::string::size_type start = 0, bar;
    while ((bar = text.find('|', start)) != std::string::npos) {
        fields.push_back(text.substr(start, bar - start));
        start = bar + 1;
    }
    fields.push_back(text.substr(start));
    return fields;
}

bool ParseTestDocument(const std::string& bytes, const std::string& name, Inventory& inventory,
                       std::string& error) {
    std::istringstream in(bytes);
    std::string line;
    int number = 0;
    inventory = Inventory();
    inventory.source = name;
    while (std::getline(in, line)) {
        ++number;
        std::vector<std::string> fields = Fields(line.substr(line.find(' ') + 1));
        if (number == 1 && line.compare(0, 7, "system ") == 0) {
            inventory.systemID = line.substr(7);
        } else if (line.compare(0, 5, "time ") == 0) {
            inventory.timestamp = line.substr(5);
        } else if (line.compare(0, 10, "component ") == 0 && fields.size() == 6) {
            inventory.components.push_back(
                TestComponent(fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]));
        } else {
            error = name + ": line " + std::to_string(number) + ": not an inventory line";
            return false;
        }
    }
    if (number == 0) {
        error = name + ": empty document";
        return false;
    }
    return true;
}

bool ReadTestErrors(const std::string& path, ErrorDocument& errors, std::string& error) {
    std::ifstream in(path);
    if (!in) {
        error = path + ": cannot open";
        return false;
    }
    errors.source = path;
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> fields = Fields(line);
        if (fields.size() != 2) {
            error = path + ": not an error document";
            return false;
        }
        errors.failures.push_back({fields[0], fields[1]});
    }
    return true;
}

}  // namespace

DocumentReaders TestReaders() { return {ParseTestDocument, ReadTestErrors}; }

void ExecSql(const std::string& url, const std::string& sql) {
    if (url.compare(0, 7, "sqlite:") == 0) {
        sqlite3* raw = nullptr;
        int rc = sqlite3_open(url.substr(7).c_str(), &raw);
        SqliteDb db(raw);
        ASSERT_EQ(rc, SQLITE_OK);
        char* message = nullptr;
        rc = sqlite3_exec(db.get(), sql.c_str(), nullptr, nullptr, &message);
        std::string text = message ? message : "";
        sqlite3_free(message);
        ASSERT_EQ(rc, SQLITE_OK) << text;
        return;
    }
    PgConnection connection(PQconnectdb(url.c_str()));
    ASSERT_EQ(PQstatus(connection.get()), CONNECTION_OK) << PQerrorMessage(connection.get());
    PgResult result(PQexec(connection.get(), sql.c_str()));
    ASSERT_TRUE(PQresultStatus(result.get()) == PGRES_COMMAND_OK ||
                PQresultStatus(result.get()) == PGRES_TUPLES_OK)
        << PQerrorMessage(connection.get());
}

void FleetDatabaseTest::SetUp() {
    dir_ = MakeTempDir("sorvik-fleet-test");
    ASSERT_FALSE(dir_.empty());
    if (GetParam() == Backend::Sqlite) {
        url_ = "sqlite:" + dir_ + "/fleet.db";
    } else {
        std::string error;
        ASSERT_TRUE(PostgresServer::Shared().NewDatabase(url_, error)) << error;
    }
    std::string error;
    ASSERT_TRUE(OpenFleetStore(url_, store_, error)) << error;
}

void FleetDatabaseTest::TearDown() {
    store_.reset();
    if (!dir_.empty()) RemoveTree(dir_);
}

std::unique_ptr<FleetStore> FleetDatabaseTest::OpenAgain() {
    std::unique_ptr<FleetStore> store;
    std::string error;
    EXPECT_TRUE(OpenFleetStore(url_, store, error)) << error;
    return store;
}

StoreCounts FleetDatabaseTest::Counts() {
    StoreCounts counts;
    std::string error;
    EXPECT_TRUE(store_->Counts(counts, error)) << error;
    return counts;
}

std::string BackendName(const ::testing::TestParamInfo<Backend>& info) {
    return info.param == Backend::Sqlite ? "SQLite" : "PostgreSQL";
}

}  // namespace testing
}  // namespace fleet
}  // namespace audit
