#include "audit/fleet/FleetStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "FleetTestSupport.h"
#include "PostgresServer.h"

namespace audit {
namespace fleet {
namespace {

using testing::FleetDatabaseTest;
using testing::TestComponent;

CollectionRecord Record(const std::string& host, std::int64_t when, const std::string& hash,
                        const std::string& biosVersion) {
    CollectionRecord record;
    record.host = host;
    record.collectedAt = when;
    record.collectorVersion = "21.09.200 (BLD_1155)";
    record.contentHash = hash;
    record.source = "/srv/inventory/" + host + ".json";
    record.inventory.systemID = "0A2B";
    record.inventory.components = {
        TestComponent("BIOS", "BIOS", "BIOS.Setup.1-1", "", "", biosVersion),
        TestComponent("FRMW", "Ethernet 10G", "NIC.Slot.2-1-1", "8086", "1572", "20.5.13")};
    return record;
}

bool Add(FleetStore& store, const CollectionRecord& record) {
    bool added = false;
    std::string error;
    EXPECT_TRUE(store.AddCollection(record, added, error)) << error;
    return added;
}

std::vector<CollectionRecord> Latest(FleetStore& store) {
    std::vector<CollectionRecord> collections;
    std::string error;
    EXPECT_TRUE(store.LatestCollections(collections, error)) << error;
    return collections;
}

class FleetStoreTest : public FleetDatabaseTest {};

TEST_P(FleetStoreTest, ReopeningKeepsTheSchemaAndTheRows) {
    EXPECT_TRUE(Add(*store_, Record("h1", 100, "aa", "1.0")));
    std::unique_ptr<FleetStore> again = OpenAgain();
    ASSERT_TRUE(again);
    StoreCounts counts;
    std::string error;
    ASSERT_TRUE(again->Counts(counts, error)) << error;
    EXPECT_EQ(counts.collections, 1);
    EXPECT_EQ(counts.components, 2);
}

TEST_P(FleetStoreTest, RefusesASchemaNewerThanItKnows) {
    testing::ExecSql(url_, "UPDATE schema_version SET version = " + std::to_string(kSchemaVersion + 1));
    std::unique_ptr<FleetStore> store;
    std::string error;
    EXPECT_FALSE(OpenFleetStore(url_, store, error));
    EXPECT_THAT(error, ::testing::HasSubstr("schema version " + std::to_string(kSchemaVersion + 1)));
    EXPECT_THAT(error, ::testing::HasSubstr("use a newer sorvik-audit"));
}

TEST_P(FleetStoreTest, TheSameDocumentAgainAddsNothing) {
    CollectionRecord record = Record("h1", 100, "aa", "1.0");
    record.failures = {{"/storageinv", "timed out"}};
    EXPECT_TRUE(Add(*store_, record));
    StoreCounts before = Counts();
    EXPECT_FALSE(Add(*store_, record));
    std::unique_ptr<FleetStore> other = OpenAgain();
    ASSERT_TRUE(other);
    EXPECT_FALSE(Add(*other, record));
    StoreCounts after = Counts();
    EXPECT_EQ(after.hosts, 1);
    EXPECT_EQ(after.collections, before.collections);
    EXPECT_EQ(after.components, before.components);
    EXPECT_EQ(after.failures, 1);

    // The same bytes from another host are that host's collection.
    record.host = "h2";
    EXPECT_TRUE(Add(*store_, record));
    EXPECT_EQ(Counts().collections, 2);
}

TEST_P(FleetStoreTest, KeepsEveryFieldAsWritten) {
    CollectionRecord record = Record("rack 1\\h\t1", 1709288525, "bb", "1.0");
    record.inventory.os = {"Debian GNU/Linux 12", "Debian", "DEB", "x86_64", "12", "4", "", "", "6.1.0-18"};
    Component odd = TestComponent("FRMW", "tab\there, line\nthere, back\\slash, 'quote' \"double\"",
                                  "Disk.Bay.0:Enclosure.Internal.0-1", "", "", "v2.80 (01/13/2023) \u00e9");
    odd.componentID = "25227";
    odd.componentInstance = "3";
    odd.subVendorID = "1028";
    odd.subDeviceID = "1f53";
    record.inventory.components.push_back(odd);
    record.failures = {{"/storageinv", "line one\nline two\\"}, {"/nicinv", ""}};
    ASSERT_TRUE(Add(*store_, record));

    std::vector<CollectionRecord> latest = Latest(*store_);
    ASSERT_EQ(latest.size(), 1u);
    const CollectionRecord& got = latest[0];
    EXPECT_EQ(got.host, record.host);
    EXPECT_EQ(got.collectedAt, record.collectedAt);
    EXPECT_EQ(got.collectorVersion, record.collectorVersion);
    EXPECT_EQ(got.contentHash, record.contentHash);
    EXPECT_EQ(got.source, record.source);
    EXPECT_EQ(got.inventory.systemID, "0A2B");
    EXPECT_EQ(got.inventory.os.name, "Debian GNU/Linux 12");
    EXPECT_EQ(got.inventory.os.minorVersion, "4");
    EXPECT_EQ(got.inventory.os.buildNumber, "6.1.0-18");
    ASSERT_EQ(got.inventory.components.size(), 3u);
    const Component& c = got.inventory.components[2];
    EXPECT_EQ(c.name, odd.name);
    EXPECT_EQ(c.componentID, "25227");
    EXPECT_EQ(c.componentInstance, "3");
    EXPECT_EQ(c.fqdd, odd.fqdd);
    EXPECT_EQ(c.subVendorID, "1028");
    EXPECT_EQ(c.subDeviceID, "1f53");
    EXPECT_EQ(c.version, odd.version);
    EXPECT_EQ(got.inventory.components[0].version, "1.0");
    ASSERT_EQ(got.failures.size(), 2u);
    EXPECT_EQ(got.failures[0].message, "line one\nline two\\");
    EXPECT_EQ(got.failures[1].module, "/nicinv");
}

TEST_P(FleetStoreTest, LatestIsTheNewestCollectionTimeThenTheLastLoaded) {
    EXPECT_TRUE(Add(*store_, Record("h1", 200, "new", "2.0")));
    EXPECT_TRUE(Add(*store_, Record("h1", 100, "old", "1.0")));  // loaded later, collected earlier
    EXPECT_TRUE(Add(*store_, Record("h2", 100, "first", "1.0")));
    EXPECT_TRUE(Add(*store_, Record("h2", 100, "second", "3.0")));
    std::vector<CollectionRecord> latest = Latest(*store_);
    ASSERT_EQ(latest.size(), 2u);
    EXPECT_EQ(latest[0].host, "h1");
    EXPECT_EQ(latest[0].contentHash, "new");
    EXPECT_EQ(latest[0].inventory.components[0].version, "2.0");
    EXPECT_EQ(latest[1].contentHash, "second");
    EXPECT_EQ(Counts().collections, 4);
}

// Programs started together on an empty database: one creates the schema,
// the others find it, none fails.
TEST_P(FleetStoreTest, ProgramsOpeningAnEmptyDatabaseAtOnceAllSucceed) {
    std::string fresh = "sqlite:" + dir_ + "/fresh.db";
    std::string error;
    if (GetParam() == testing::Backend::Postgres) {
        ASSERT_TRUE(testing::PostgresServer::Shared().NewDatabase(fresh, error)) << error;
    }
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    for (int i = 0; i < 4; ++i) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            close(gate[1]);
            char go;
            if (read(gate[0], &go, 1) != 0) _exit(4);
            std::unique_ptr<FleetStore> store;
            std::string why;
            _exit(OpenFleetStore(fresh, store, why) ? 0 : 1);
        }
        children.push_back(pid);
    }
    close(gate[0]);
    close(gate[1]);
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    std::unique_ptr<FleetStore> store;
    ASSERT_TRUE(OpenFleetStore(fresh, store, error)) << error;
    EXPECT_TRUE(Add(*store, Record("h1", 100, "aa", "1.0")));
}

// A record the database refuses half-way, among others stored at once: none
// of its rows stay, not even its new host, and the records after it store.
TEST_P(FleetStoreTest, ARecordThatFailsHalfWayLeavesNothingAndTheOthersStore) {
    if (GetParam() == testing::Backend::Sqlite) {
        testing::ExecSql(url_,
                         "CREATE TRIGGER poison BEFORE INSERT ON components WHEN NEW.version = 'poison' "
                         "BEGIN SELECT RAISE(ABORT, 'poisoned component'); END");
    } else {
        testing::ExecSql(url_,
                         "CREATE FUNCTION poison() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN "
                         "IF NEW.version = 'poison' THEN RAISE EXCEPTION 'poisoned component'; END IF; "
                         "RETURN NEW; END $$; CREATE TRIGGER poison BEFORE INSERT ON components "
                         "FOR EACH ROW EXECUTE FUNCTION poison()");
    }
    CollectionRecord poisoned = Record("bad", 100, "bb", "1.0");
    poisoned.inventory.components.push_back(TestComponent("FRMW", "Disk", "Disk.Bay.1", "", "", "poison"));
    poisoned.failures = {{"/storageinv", "timed out"}};
    std::vector<CollectionRecord> records = {Record("h1", 100, "aa", "1.0"), poisoned,
                                             Record("h2", 100, "cc", "1.0")};
    std::vector<AddResult> results;
    store_->AddCollections(records, results);
    ASSERT_EQ(results.size(), 3u);
    EXPECT_TRUE(results[0].added);
    EXPECT_FALSE(results[1].added);
    EXPECT_THAT(results[1].error, ::testing::HasSubstr("poisoned component"));
    EXPECT_TRUE(results[2].added) << results[2].error;
    StoreCounts counts = Counts();
    EXPECT_EQ(counts.hosts, 2);
    EXPECT_EQ(counts.collections, 2);
    EXPECT_EQ(counts.components, 4);
    EXPECT_EQ(counts.failures, 0);
}

SORVIK_FLEET_BOTH_DATABASES(FleetStoreTest);

TEST(FleetStoreUrlTest, SqliteUrlNeedsAPath) {
    std::unique_ptr<FleetStore> store;
    std::string error;
    EXPECT_FALSE(OpenFleetStore("sqlite:", store, error));
    EXPECT_THAT(error, ::testing::HasSubstr("names no file"));
}

}  // namespace
}  // namespace fleet
}  // namespace audit
