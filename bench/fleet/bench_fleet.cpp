// Loads synthetic fleets (HOSTS hosts of COMPONENTS components each, written
// as the collector's JSON inventories) into a PostgreSQL server of its own and
// into SQLite, and times: the load; a plain COPY of the same rows into the
// same tables of an empty database; drift over the loaded fleet.
//
//   bench_fleet [--hosts 1000,10000,30000] [--components 100] [--sqlite-hosts 10000]
//
// Ratios to read: load / COPY (target at most 2), drift on PostgreSQL at 10,000
// hosts (target at most 1 s), and load time per host across sizes (linear).
#include <libpq-fe.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "PostgresServer.h"
#include "TempDir.h"
#include "audit/DocumentReader.h"
#include "audit/fleet/ComponentGroup.h"
#include "audit/fleet/Drift.h"
#include "audit/fleet/FleetLoader.h"
#include "audit/fleet/FleetStore.h"
#include "audit/fleet/PgHandle.h"
#include "audit/fleet/Sha256.h"

namespace {

using namespace audit;
using namespace audit::fleet;

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

[[noreturn]] void Die(const std::string& message) {
    std::fprintf(stderr, "bench_fleet: %s\n", message.c_str());
    std::exit(1);
}

// Half the components are PCI devices, half are known by FQDD; one host in a
// hundred runs an older firmware on component 7, so drift has outliers.
std::vector<Component> HostComponents(int host, int count) {
    std::vector<Component> components;
    for (int i = 0; i < count; ++i) {
        Component c;
        c.componentType = i % 10 == 0 ? "BIOS" : "FRMW";
        c.name = "Component " + std::to_string(i);
        c.componentID = std::to_string(1000 + i);
        if (i % 2 == 0) {
            c.vendorID = "8086";
            char device[16];
            std::snprintf(device, sizeof device, "%04x", 0x1500 + i);
            c.deviceID = device;
            c.subVendorID = "1028";
            c.subDeviceID = "0006";
            c.componentInstance = "0000:" + std::to_string(10 + i) + ":00.0";
        } else {
            c.fqdd = "NIC.Slot." + std::to_string(i) + "-1-1";
        }
        c.version = (i == 7 && host % 100 == 42) ? "20.0.17" : "20.5." + std::to_string(i);
        components.push_back(c);
    }
    return components;
}

std::string JsonDocument(const std::vector<Component>& components) {
    std::string json =
        "{\"UpdatableComponentsInventory\": {\"OperatingSystem\": {\"name\": \"Debian GNU/Linux 12 "
        "(bookworm)\", "
        "\"osVendor\": \"Debian GNU/Linux\", \"osCode\": \"debian\", \"osArch\": \"x86_64\", "
        "\"majorVersion\": "
        "\"12\", \"minorVersion\": \"\"}, \"System\": {\"systemID\": \"0A2B\"}, \"UpdateableComponent\": [";
    for (std::size_t i = 0; i < components.size(); ++i) {
        const Component& c = components[i];
        json += i ? ", {" : "{";
        json += "\"name\": \"" + c.name + "\", \"componentType\": \"" + c.componentType +
                "\", \"componentID\": \"" + c.componentID + "\", \"version\": \"" + c.version + "\"";
        if (!c.fqdd.empty()) json += ", \"fqdd\": \"" + c.fqdd + "\"";
        if (!c.vendorID.empty()) {
            json += ", \"componentInstance\": \"" + c.componentInstance + "\", \"vendorID\": \"" +
                    c.vendorID + "\", \"deviceID\": \"" + c.deviceID + "\", \"subVendorID\": \"" +
                    c.subVendorID + "\", \"subDeviceID\": \"" + c.subDeviceID + "\"";
        }
        json += "}";
    }
    return json + "]}}\n";
}

std::string HostName(int host) {
    char name[32];
    std::snprintf(name, sizeof name, "host%05d", host);
    return name;
}

// The rows a load of the first hosts files writes, in COPY's text format.
struct CopyRows {
    std::string hosts, collections, components;
};

CopyRows BuildRows(int hosts, int components, const std::vector<std::string>& documents) {
    CopyRows rows;
    for (int host = 0; host < hosts; ++host) {
        std::string id = std::to_string(host + 1);
        rows.hosts += id + "\t" + HostName(host) + "\n";
        rows.collections += id + "\t" + id + "\t1700000000\t\t" + Sha256Hex(documents[host]) + "\t/bench/" +
                            HostName(host) +
                            ".json\t0A2B\tDebian GNU/Linux 12 (bookworm)\tDebian GNU/Linux\tdebian\t"
                            "x86_64\t12\t\t\t\t\n";
        int position = 0;
        for (const Component& c : HostComponents(host, components)) {
            rows.components += id + "\t" + std::to_string(position++) + "\t" + ComponentGroup("0A2B", c) +
                               "\t" + c.name + "\t" + c.componentType + "\t" + c.componentID + "\t" +
                               c.componentInstance + "\t" + c.fqdd + "\t" + c.vendorID + "\t" + c.deviceID +
                               "\t" + c.subVendorID + "\t" + c.subDeviceID + "\t" + c.version + "\n";
        }
    }
    return rows;
}

void Exec(PGconn* connection, const std::string& sql, ExecStatusType expected) {
    PgResult result(PQexec(connection, sql.c_str()));
    if (PQresultStatus(result.get()) != expected) Die(sql + ": " + PQerrorMessage(connection));
}

void Copy(PGconn* connection, const std::string& sql, const std::string& rows) {
    Exec(connection, sql, PGRES_COPY_IN);
    if (PQputCopyData(connection, rows.data(), static_cast<int>(rows.size())) != 1 ||
        PQputCopyEnd(connection, nullptr) != 1) {
        Die(std::string("COPY: ") + PQerrorMessage(connection));
    }
    PgResult result(PQgetResult(connection));
    if (PQresultStatus(result.get()) != PGRES_COMMAND_OK)
        Die(std::string("COPY: ") + PQerrorMessage(connection));
    while (PgResult(PQgetResult(connection))) {
    }
}

std::unique_ptr<FleetStore> OpenStore(const std::string& url) {
    std::unique_ptr<FleetStore> store;
    std::string error;
    if (!OpenFleetStore(url, store, error)) Die(error);
    return store;
}

std::string NewPostgresDatabase() {
    std::string conninfo, error;
    if (!testing::PostgresServer::Shared().NewDatabase(conninfo, error)) Die(error);
    return conninfo;
}

double TimeLoad(const std::string& url, const std::vector<std::string>& files) {
    std::unique_ptr<FleetStore> store = OpenStore(url);
    FleetLoader loader(*store, {ParseInventory, ReadErrorDocument});
    double start = Now();
    LoadSummary summary = loader.Load(files, "");
    double seconds = Now() - start;
    if (!summary.failures.empty()) Die(summary.failures[0]);
    if (summary.added != files.size()) Die("a file was not added");
    return seconds;
}

// The best of three, with the groups found.
double TimeDrift(const std::string& url, std::size_t& groups, std::size_t& outliers) {
    std::unique_ptr<FleetStore> store = OpenStore(url);
    double best = 1e9;
    for (int run = 0; run < 3; ++run) {
        std::vector<DriftGroup> found;
        std::string error;
        double start = Now();
        if (!ComputeDrift(*store, 10, found, error)) Die(error);
        best = std::min(best, Now() - start);
        groups = found.size();
        outliers = 0;
        for (const DriftGroup& group : found) outliers += group.outliers.size();
    }
    return best;
}

double TimeCopy(const CopyRows& rows) {
    std::string url = NewPostgresDatabase();
    OpenStore(url);  // the same tables, empty
    PgConnection connection(PQconnectdb(url.c_str()));
    if (PQstatus(connection.get()) != CONNECTION_OK) Die(PQerrorMessage(connection.get()));
    double start = Now();
    Exec(connection.get(), "BEGIN", PGRES_COMMAND_OK);
    Copy(connection.get(), "COPY hosts (id, name) FROM STDIN", rows.hosts);
    Copy(connection.get(),
         "COPY collections (id, host_id, collected_at, collector_version, content_hash, source, system_id, "
         "os_name, "
         "os_vendor, os_code, os_arch, os_major, os_minor, os_sp_major, os_sp_minor, os_build) FROM STDIN",
         rows.collections);
    Copy(connection.get(),
         "COPY components (collection_id, position, group_key, name, component_type, component_id, "
         "component_instance, fqdd, vendor_id, device_id, sub_vendor_id, sub_device_id, version) FROM STDIN",
         rows.components);
    Exec(connection.get(), "COMMIT", PGRES_COMMAND_OK);
    return Now() - start;
}

std::vector<int> Sizes(const char* text) {
    std::vector<int> sizes;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) sizes.push_back(std::atoi(item.c_str()));
    return sizes;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<int> sizes = {1000, 10000, 30000};
    int components = 100;
    int sqliteHosts = 10000;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--hosts") == 0) {
            sizes = Sizes(argv[i + 1]);
        } else if (std::strcmp(argv[i], "--components") == 0) {
            components = std::atoi(argv[i + 1]);
        } else if (std::strcmp(argv[i], "--sqlite-hosts") == 0) {
            sqliteHosts = std::atoi(argv[i + 1]);
        } else {
            Die(std::string("unknown option ") + argv[i]);
        }
    }
    if (sizes.empty() || components <= 0) Die("usage: bench_fleet [--hosts N,N...] [--components N]");
    if (!testing::PostgresServer::Shared().StartError().empty())
        Die(testing::PostgresServer::Shared().StartError());

    std::string dir = testing::MakeTempDir("sorvik-bench-fleet");
    if (dir.empty()) Die("mkdtemp failed");
    int largest = *std::max_element(sizes.begin(), sizes.end());
    std::vector<std::string> files, documents;
    for (int host = 0; host < largest; ++host) {
        documents.push_back(JsonDocument(HostComponents(host, components)));
        files.push_back(dir + "/" + HostName(host) + ".json");
        std::ofstream out(files.back(), std::ios::binary);
        out << documents.back();
        if (!out) Die("cannot write " + files.back());
    }

    std::printf("%8s %10s %10s %8s %10s %10s %9s %12s %12s\n", "hosts", "load pg s", "copy pg s", "ratio",
                "us/host", "drift pg s", "outliers", "load sqlite", "drift sqlite");
    for (int hosts : sizes) {
        std::vector<std::string> subset(files.begin(), files.begin() + hosts);
        std::string pg = NewPostgresDatabase();
        double load = TimeLoad(pg, subset);
        double copy = TimeCopy(BuildRows(hosts, components, documents));
        std::size_t groups = 0, outliers = 0;
        double drift = TimeDrift(pg, groups, outliers);
        std::string sqliteLoad = "-", sqliteDrift = "-";
        if (hosts <= sqliteHosts) {
            std::string url = "sqlite:" + dir + "/fleet" + std::to_string(hosts) + ".db";
            char text[32];
            std::snprintf(text, sizeof text, "%.2f", TimeLoad(url, subset));
            sqliteLoad = text;
            std::size_t g = 0, o = 0;
            std::snprintf(text, sizeof text, "%.3f", TimeDrift(url, g, o));
            sqliteDrift = text;
        }
        std::printf("%8d %10.2f %10.2f %8.2f %10.0f %10.3f %9zu %12s %12s\n", hosts, load, copy, load / copy,
                    load / hosts * 1e6, drift, outliers, sqliteLoad.c_str(), sqliteDrift.c_str());
        std::fflush(stdout);
    }
    testing::RemoveTree(dir);
    return 0;
}
