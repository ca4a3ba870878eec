#include "audit/fleet/Drift.h"

#include <cjson/cJSON.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "FleetTestSupport.h"

namespace audit {
namespace fleet {
namespace {

using testing::FleetDatabaseTest;
using testing::TestComponent;

const char* const kNicGroup = "system 0A2B, FRMW, PCI 8086:1572::";

class DriftTest : public FleetDatabaseTest {
protected:
    // One collection of host with a BIOS, a RAID controller and a NIC at nic.
    void AddHost(const std::string& host, const std::string& nic, std::int64_t when = 100,
                 const std::string& system = "0A2B") {
        CollectionRecord record;
        record.host = host;
        record.collectedAt = when;
        record.contentHash = host + nic + std::to_string(when);
        record.inventory.systemID = system;
        record.inventory.components = {
            TestComponent("BIOS", "BIOS", "", "", "", "2.1.0"),
            TestComponent("FRMW", "PERC H755", "RAID.Integrated.1-1", "", "", "52.16.1"),
            TestComponent("FRMW", "Ethernet 10G", "NIC.Slot.2-1-1", "8086", "1572", nic)};
        bool added = false;
        std::string error;
        ASSERT_TRUE(store_->AddCollection(record, added, error)) << error;
        ASSERT_TRUE(added);
    }

    std::vector<DriftGroup> Drift(double maxShare = 10) {
        std::vector<DriftGroup> groups;
        std::string error;
        EXPECT_TRUE(ComputeDrift(*store_, maxShare, groups, error)) << error;
        return groups;
    }
};

using Outliers = std::vector<std::pair<std::string, std::string>>;
using Versions = std::vector<std::pair<std::string, std::int64_t>>;

TEST_P(DriftTest, PlantedDriftGivesExactlyTheThreeOutliers) {
    for (int i = 0; i < 37; ++i) AddHost("host" + std::to_string(i), "20.5.13");
    AddHost("odd-a", "20.0.17");
    AddHost("odd-b", "20.0.17");
    AddHost("odd-c", "19.5.12");
    std::vector<DriftGroup> groups = Drift();
    ASSERT_EQ(groups.size(), 1u);  // the BIOS and RAID groups run one version
    EXPECT_EQ(groups[0].group, kNicGroup);
    EXPECT_EQ(groups[0].hosts, 40);
    EXPECT_EQ(groups[0].versions, (Versions{{"20.5.13", 37}, {"20.0.17", 2}, {"19.5.12", 1}}));
    EXPECT_EQ(groups[0].outliers,
              (Outliers{{"odd-c", "19.5.12"}, {"odd-a", "20.0.17"}, {"odd-b", "20.0.17"}}));
}

// Ten hosts, one of them on another version: a 10 % share.
TEST_P(DriftTest, AnOutlierRunsAShareStrictlyBelowTheLimit) {
    for (int i = 0; i < 9; ++i) AddHost("host" + std::to_string(i), "20.5.13");
    AddHost("odd", "20.0.17");
    struct Row {
        double maxShare;
        Outliers outliers;
    };
    const Row rows[] = {
        {10, {}},
        {10.5, {{"odd", "20.0.17"}}},
        {5, {}},
        {95,
         {{"odd", "20.0.17"},
          {"host0", "20.5.13"},
          {"host1", "20.5.13"},
          {"host2", "20.5.13"},
          {"host3", "20.5.13"},
          {"host4", "20.5.13"},
          {"host5", "20.5.13"},
          {"host6", "20.5.13"},
          {"host7", "20.5.13"},
          {"host8", "20.5.13"}}},
    };
    for (const Row& row : rows) {
        std::vector<DriftGroup> groups = Drift(row.maxShare);
        ASSERT_EQ(groups.size(), 1u);
        EXPECT_EQ(groups[0].outliers, row.outliers) << row.maxShare;
    }
}

TEST_P(DriftTest, ANewerCollectionReplacesTheHost) {
    for (int i = 0; i < 19; ++i) AddHost("host" + std::to_string(i), "20.5.13");
    AddHost("odd", "20.0.17", 100);
    ASSERT_EQ(Drift().size(), 1u);
    AddHost("odd", "20.5.13", 200);
    EXPECT_TRUE(Drift().empty());
    // An older collection loaded afterwards does not bring the drift back.
    AddHost("odd", "19.0.0", 150);
    EXPECT_TRUE(Drift().empty());
}

TEST_P(DriftTest, AHostCountsOnceForEachVersionItRuns) {
    for (int i = 0; i < 3; ++i) AddHost("host" + std::to_string(i), "20.5.13");
    CollectionRecord mixed;
    mixed.host = "mixed";
    mixed.collectedAt = 100;
    mixed.contentHash = "mixed";
    mixed.inventory.systemID = "0A2B";
    mixed.inventory.components = {
        TestComponent("FRMW", "Ethernet 10G", "NIC.Slot.2-1-1", "8086", "1572", "20.5.13"),
        TestComponent("FRMW", "Ethernet 10G", "NIC.Slot.2-1-2", "8086", "1572", "20.5.13"),
        TestComponent("FRMW", "Ethernet 10G", "NIC.Slot.3-1-1", "8086", "1572", "20.0.17")};
    bool added = false;
    std::string error;
    ASSERT_TRUE(store_->AddCollection(mixed, added, error)) << error;
    std::vector<DriftGroup> groups = Drift(30);
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].hosts, 4);
    EXPECT_EQ(groups[0].versions, (Versions{{"20.5.13", 4}, {"20.0.17", 1}}));
    EXPECT_EQ(groups[0].outliers, (Outliers{{"mixed", "20.0.17"}}));
}

TEST_P(DriftTest, OtherSystemsAreOtherGroups) {
    AddHost("r750", "20.5.13", 100, "0A2B");
    AddHost("r650", "20.0.17", 100, "0A2C");
    EXPECT_TRUE(Drift().empty());
}

SORVIK_FLEET_BOTH_DATABASES(DriftTest);

std::vector<DriftGroup> SampleGroups() {
    DriftGroup group;
    group.group = kNicGroup;
    group.hosts = 40;
    group.versions = {{"20.5.13", 39}, {"19.5.12", 1}};
    group.outliers = {{"odd-c", "19.5.12"}};
    return {group};
}

TEST(DriftOutputTest, JsonCarriesGroupVersionsAndOutliers) {
    std::ostringstream out;
    WriteDriftJson(SampleGroups(), 10, out);
    std::unique_ptr<cJSON, void (*)(cJSON*)> root(cJSON_Parse(out.str().c_str()), cJSON_Delete);
    ASSERT_TRUE(root) << out.str();
    EXPECT_EQ(cJSON_GetObjectItem(root.get(), "schemaVersion")->valueint, 1);
    EXPECT_EQ(cJSON_GetObjectItem(root.get(), "maxShare")->valuedouble, 10);
    cJSON* group = cJSON_GetArrayItem(cJSON_GetObjectItem(root.get(), "groups"), 0);
    ASSERT_TRUE(group);
    EXPECT_STREQ(cJSON_GetObjectItem(group, "group")->valuestring, kNicGroup);
    EXPECT_EQ(cJSON_GetObjectItem(group, "hosts")->valueint, 40);
    cJSON* versions = cJSON_GetObjectItem(group, "versions");
    ASSERT_EQ(cJSON_GetArraySize(versions), 2);
    EXPECT_STREQ(cJSON_GetObjectItem(cJSON_GetArrayItem(versions, 1), "version")->valuestring, "19.5.12");
    EXPECT_EQ(cJSON_GetObjectItem(cJSON_GetArrayItem(versions, 1), "hosts")->valueint, 1);
    cJSON* outlier = cJSON_GetArrayItem(cJSON_GetObjectItem(group, "outliers"), 0);
    ASSERT_TRUE(outlier);
    EXPECT_STREQ(cJSON_GetObjectItem(outlier, "host")->valuestring, "odd-c");
    EXPECT_STREQ(cJSON_GetObjectItem(outlier, "version")->valuestring, "19.5.12");
}

TEST(DriftOutputTest, TableAlignsVersionsAndNamesOutliers) {
    std::ostringstream out;
    WriteDriftTable(SampleGroups(), out);
    EXPECT_EQ(out.str(),
              "system 0A2B, FRMW, PCI 8086:1572:: (40 hosts)\n"
              "  VERSION  HOSTS\n"
              "  20.5.13  39\n"
              "  19.5.12  1\n"
              "  outlier odd-c 19.5.12\n");
    std::ostringstream none;
    WriteDriftTable({}, none);
    EXPECT_THAT(none.str(), ::testing::HasSubstr("no drift"));
}

}  // namespace
}  // namespace fleet
}  // namespace audit
