#include "audit/fleet/FleetLoader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

#include "FleetTestSupport.h"

namespace audit {
namespace fleet {
namespace {

using testing::FleetDatabaseTest;
using ::testing::HasSubstr;
using testing::TestComponent;
using testing::TestDocument;
using testing::WriteFile;

std::string HostDocument(const std::string& bios, const std::string& time = "") {
    return TestDocument("0A2B",
                        {TestComponent("BIOS", "BIOS", "", "", "", bios),
                         TestComponent("FRMW", "Ethernet 10G", "NIC.Slot.2-1-1", "8086", "1572", "20.5.13")},
                        time);
}

class FleetLoaderTest : public FleetDatabaseTest {
protected:
    // host0.json ... host<count-1>.json in dir_/fleet.
    std::vector<std::string> WriteFleet(int count) {
        std::string fleet = dir_ + "/fleet";
        EXPECT_EQ(mkdir(fleet.c_str(), 0755), 0);
        std::vector<std::string> files;
        for (int i = 0; i < count; ++i) {
            files.push_back(fleet + "/host" + std::to_string(i) + ".json");
            WriteFile(files.back(), HostDocument("2.1." + std::to_string(i)));
        }
        return files;
    }

    LoadSummary LoadAll(const std::vector<std::string>& files, const std::string& host = "") {
        FleetLoader loader(*store_, testing::TestReaders());
        return loader.Load(files, host);
    }
};

TEST_P(FleetLoaderTest, ACorruptFileIsSkippedByNameAndTheRestLoad) {
    std::vector<std::string> files = WriteFleet(5);
    WriteFile(files[2], "\x01\x02 this is no inventory");
    LoadSummary summary = LoadAll(files);
    ASSERT_EQ(summary.failures.size(), 1u);
    EXPECT_THAT(summary.failures[0], ::testing::StartsWith(files[2] + ": "));
    EXPECT_EQ(summary.added, 4u);
    StoreCounts counts = Counts();
    EXPECT_EQ(counts.hosts, 4);
    EXPECT_EQ(counts.collections, 4);
    EXPECT_EQ(counts.components, 8);
}

TEST_P(FleetLoaderTest, LoadingTheSameFilesAgainAddsNoRows) {
    std::vector<std::string> files = WriteFleet(4);
    EXPECT_EQ(LoadAll(files).added, 4u);
    StoreCounts before = Counts();
    LoadSummary again = LoadAll(files);
    EXPECT_EQ(again.added, 0u);
    EXPECT_EQ(again.unchanged, 4u);
    EXPECT_TRUE(again.failures.empty());
    StoreCounts after = Counts();
    EXPECT_EQ(after.hosts, before.hosts);
    EXPECT_EQ(after.collections, before.collections);
    EXPECT_EQ(after.components, before.components);

    // A changed document of the same host is a new collection.
    WriteFile(files[0], HostDocument("2.2.0"));
    EXPECT_EQ(LoadAll({files[0]}).added, 1u);
    EXPECT_EQ(Counts().collections, before.collections + 1);
    EXPECT_EQ(Counts().hosts, before.hosts);
}

TEST_P(FleetLoaderTest, TwoProcessesLoadingOverlappingSetsStoreEachCollectionOnce) {
    std::vector<std::string> files = WriteFleet(200);
    // The same order from the same moment, so the two meet on most hosts;
    // the second leaves out every fifth file.
    std::vector<std::string> second;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (i % 5 != 4) second.push_back(files[i]);
    }
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    for (const auto* set : {&files, &second}) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            // A process of its own with its own connection; _exit skips
            // the parent's destructors.
            close(gate[1]);
            std::unique_ptr<FleetStore> store;
            std::string error;
            if (!OpenFleetStore(url_, store, error)) _exit(3);
            char go;
            if (read(gate[0], &go, 1) != 0) _exit(4);
            FleetLoader loader(*store, testing::TestReaders());
            LoadSummary summary = loader.Load(*set, "");
            _exit(summary.failures.empty() ? 0 : 1);
        }
        children.push_back(pid);
    }
    close(gate[0]);
    close(gate[1]);  // both start when their stores are open
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    StoreCounts counts = Counts();
    EXPECT_EQ(counts.hosts, 200);
    EXPECT_EQ(counts.collections, 200);
    EXPECT_EQ(counts.components, 400);
}

TEST_P(FleetLoaderTest, StoresTheModuleFailuresOfTheErrorDocumentBeside) {
    std::vector<std::string> files = WriteFleet(2);
    WriteFile(dir_ + "/fleet/host1.errors.xml", "/storageinv|timed out\n/nicinv|exit status 2\n");
    std::vector<std::string> errors;
    std::vector<std::string> listed = FleetLoader::ListInventories({dir_ + "/fleet"}, errors);
    EXPECT_EQ(listed, files);
    EXPECT_EQ(LoadAll(listed).added, 2u);
    std::vector<CollectionRecord> latest;
    std::string error;
    ASSERT_TRUE(store_->LatestCollections(latest, error)) << error;
    ASSERT_EQ(latest.size(), 2u);
    EXPECT_TRUE(latest[0].failures.empty());
    ASSERT_EQ(latest[1].failures.size(), 2u);
    EXPECT_EQ(latest[1].failures[1].module, "/nicinv");
    EXPECT_EQ(latest[1].failures[1].message, "exit status 2");

    WriteFile(dir_ + "/fleet/host0.errors.xml", "broken");
    LoadSummary summary = LoadAll({files[0]});
    ASSERT_EQ(summary.failures.size(), 1u);
    EXPECT_THAT(summary.failures[0], HasSubstr("host0.errors.xml"));
}

TEST_P(FleetLoaderTest, CollectionTimeIsTheDocumentsElseTheFilesAndHostIsTheNameOrTheOption) {
    std::vector<std::string> files = WriteFleet(2);
    WriteFile(files[0], HostDocument("1.0", "2024-03-01 10:22:05"));
    struct utimbuf times = {1600000000, 1600000000};
    ASSERT_EQ(utime(files[1].c_str(), &times), 0);
    EXPECT_EQ(LoadAll(files).added, 2u);
    std::time_t documentTime = 0;
    ASSERT_TRUE(ParseCollectionTime("2024-03-01 10:22:05", documentTime));

    std::vector<CollectionRecord> latest;
    std::string error;
    ASSERT_TRUE(store_->LatestCollections(latest, error)) << error;
    ASSERT_EQ(latest.size(), 2u);
    EXPECT_EQ(latest[0].host, "host0");
    EXPECT_EQ(latest[0].collectedAt, documentTime);
    EXPECT_EQ(latest[0].source, files[0]);
    EXPECT_EQ(latest[1].collectedAt, 1600000000);

    EXPECT_EQ(LoadAll({files[0], files[1]}, "db01").added, 2u);
    EXPECT_EQ(Counts().hosts, 3);
    WriteFile(files[0], HostDocument("1.0", "2024-13-01 10:22:05"));
    LoadSummary summary = LoadAll({files[0]});
    ASSERT_EQ(summary.failures.size(), 1u);
    EXPECT_THAT(summary.failures[0], HasSubstr("timestamp"));
}

SORVIK_FLEET_BOTH_DATABASES(FleetLoaderTest);

TEST(FleetLoaderPathsTest, HostAndErrorDocumentFollowTheFileName) {
    struct Row {
        const char* path;
        const char* host;
        const char* errors;
    };
    const Row rows[] = {
        {"inventory/server01.example.com.json", "server01.example.com",
         "inventory/server01.example.com.errors.xml"},
        {"/srv/inv/db01.xml", "db01", "/srv/inv/db01.errors.xml"},
        {"db01", "db01", "db01.errors.xml"},
        {"dir.d/db01", "db01", "dir.d/db01.errors.xml"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(FleetLoader::HostFromPath(row.path), row.host) << row.path;
        EXPECT_EQ(FleetLoader::ErrorDocumentPath(row.path), row.errors) << row.path;
    }
}

TEST(FleetLoaderPathsTest, ADirectoryGivesItsInventoriesSorted) {
    std::string dir = testing::MakeTempDir("sorvik-fleet-list");
    for (const char* name : {"b.xml", "a.json", ".hidden.json", "a.errors.xml", "notes.txt"}) {
        WriteFile(dir + "/" + name, "x");
    }
    ASSERT_EQ(mkdir((dir + "/sub.json").c_str(), 0755), 0);
    std::vector<std::string> errors;
    std::vector<std::string> files =
        FleetLoader::ListInventories({dir, dir + "/notes.txt", "-", dir + "/missing.json"}, errors);
    EXPECT_EQ(files, (std::vector<std::string>{dir + "/a.json", dir + "/b.xml", dir + "/notes.txt", "-"}));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_THAT(errors[0], HasSubstr("missing.json"));
    testing::RemoveTree(dir);
}

TEST(FleetLoaderPathsTest, CollectionTimeIsTheCollectorsFormatOnly) {
    std::time_t when = 0;
    EXPECT_TRUE(ParseCollectionTime("2024-03-01 10:22:05", when));
    std::tm parts = {};
    ASSERT_TRUE(localtime_r(&when, &parts));
    EXPECT_EQ(parts.tm_hour, 10);
    EXPECT_EQ(parts.tm_mday, 1);
    for (const char* bad : {"", "2024-03-01", "2024-03-01T10:22:05", "2024-03-01 10:22:05Z",
                            "2024-00-01 10:22:05", "2024-03-01 24:00:00", "yesterday at noon!!"}) {
        EXPECT_FALSE(ParseCollectionTime(bad, when)) << bad;
    }
}

}  // namespace
}  // namespace fleet
}  // namespace audit
