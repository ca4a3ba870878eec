#include "audit/fleet/FleetCheck.h"

#include <cjson/cJSON.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "FleetTestSupport.h"
#include "audit/fleet/FleetCommands.h"

namespace audit {
namespace fleet {
namespace {

using testing::FleetDatabaseTest;
using ::testing::HasSubstr;
using testing::TestComponent;

const char* const kBaseline = R"({"schemaVersion": 1, "rules": [
    {"match": {"componentType": "BIOS"}, "min": "2.17.1"},
    {"match": {"name": "Ethernet*"}, "min": "20.5", "required": true, "module": "/nicinv"}]})";

class FleetCheckTest : public FleetDatabaseTest {
protected:
    void SetUp() override {
        FleetDatabaseTest::SetUp();
        baselinePath_ = dir_ + "/baseline.json";
        testing::WriteFile(baselinePath_, kBaseline);
    }

    void AddHost(const std::string& host, std::int64_t when, const std::string& bios, bool nic,
                 const std::vector<ModuleFailure>& failures = {}) {
        CollectionRecord record;
        record.host = host;
        record.collectedAt = when;
        record.contentHash = host + std::to_string(when);
        record.inventory.systemID = "0A2B";
        record.inventory.components = {
            TestComponent("BIOS", "BIOS", "", "", "", bios),
            TestComponent("FRMW", "PERC H755", "RAID.Integrated.1-1", "", "", "52.16")};
        if (nic) {
            record.inventory.components.push_back(
                TestComponent("FRMW", "Ethernet 10G", "NIC.Slot.2-1-1", "8086", "1572", "20.5.13"));
        }
        record.failures = failures;
        bool added = false;
        std::string error;
        ASSERT_TRUE(store_->AddCollection(record, added, error)) << error;
    }

    std::string baselinePath_;
};

TEST_P(FleetCheckTest, CountsEachHostsLatestCollectionPerVerdict) {
    AddHost("current", 100, "2.17.1", true);
    AddHost("behind", 100, "2.9.0", true);
    AddHost("fixed", 100, "2.9.0", true);
    AddHost("fixed", 200, "2.18.0", true);
    AddHost("no-nic", 100, "2.17.1", false);
    AddHost("nic-failed", 100, "2.17.1", false, {{"/nicinv", "timed out"}});

    Baseline baseline;
    std::string error;
    ASSERT_TRUE(LoadBaseline(baselinePath_, baseline, error)) << error;
    std::vector<HostCheck> hosts;
    ASSERT_TRUE(CheckFleet(*store_, baseline, hosts, error)) << error;
    ASSERT_EQ(hosts.size(), 5u);
    struct Row {
        const char* host;
        std::size_t compliant, outdated, unknown, missing;
    };
    const Row rows[] = {{"behind", 1, 1, 0, 0},
                        {"current", 2, 0, 0, 0},
                        {"fixed", 2, 0, 0, 0},
                        {"nic-failed", 1, 0, 1, 0},
                        {"no-nic", 1, 0, 0, 1}};
    for (std::size_t i = 0; i < hosts.size(); ++i) {
        const Row& row = rows[i];
        EXPECT_EQ(hosts[i].host, row.host);
        EXPECT_EQ(hosts[i].counts[Verdict::Compliant], row.compliant) << row.host;
        EXPECT_EQ(hosts[i].counts[Verdict::Outdated], row.outdated) << row.host;
        EXPECT_EQ(hosts[i].counts[Verdict::Unknown], row.unknown) << row.host;
        EXPECT_EQ(hosts[i].counts[Verdict::Missing], row.missing) << row.host;
        EXPECT_EQ(hosts[i].nonCompliant.size(), row.outdated + row.unknown + row.missing) << row.host;
    }
    EXPECT_EQ(hosts[0].nonCompliant[0].component.version, "2.9.0");
    EXPECT_FALSE(FleetCompliant(hosts));

    std::ostringstream out, err;
    EXPECT_EQ(RunFleetCheck(url_, baselinePath_, "json", out, err), 1) << err.str();
    std::unique_ptr<cJSON, void (*)(cJSON*)> root(cJSON_Parse(out.str().c_str()), cJSON_Delete);
    ASSERT_TRUE(root) << out.str();
    cJSON* totals = cJSON_GetObjectItem(root.get(), "totals");
    EXPECT_EQ(cJSON_GetObjectItem(totals, "compliant")->valueint, 7);
    EXPECT_EQ(cJSON_GetObjectItem(totals, "outdated")->valueint, 1);
    cJSON* behind = cJSON_GetArrayItem(cJSON_GetObjectItem(root.get(), "hosts"), 0);
    EXPECT_STREQ(cJSON_GetObjectItem(behind, "host")->valuestring, "behind");
    cJSON* component = cJSON_GetArrayItem(cJSON_GetObjectItem(behind, "components"), 0);
    ASSERT_TRUE(component);
    EXPECT_STREQ(cJSON_GetObjectItem(component, "verdict")->valuestring, "outdated");
    EXPECT_STREQ(cJSON_GetObjectItem(component, "version")->valuestring, "2.9.0");
    EXPECT_STREQ(cJSON_GetObjectItem(component, "expected")->valuestring, ">=2.17.1");
}

TEST_P(FleetCheckTest, ExitStatusIsZeroOnlyWhenEveryHostComplies) {
    AddHost("current", 100, "2.17.1", true);
    std::ostringstream out, err;
    EXPECT_EQ(RunFleetCheck(url_, baselinePath_, "table", out, err), 0) << err.str();
    EXPECT_THAT(out.str(), HasSubstr("HOST     COMPLIANT  OUTDATED  NEWER  UNKNOWN  MISSING\ncurrent  2"));
    AddHost("behind", 100, "2.9.0", true);
    std::ostringstream again;
    EXPECT_EQ(RunFleetCheck(url_, baselinePath_, "table", again, err), 1);
    EXPECT_THAT(again.str(), HasSubstr("\nbehind  outdated  BIOS       2.9.0    >=2.17.1  below 2.17.1\n"));
    EXPECT_EQ(RunFleetCheck(url_, dir_ + "/none.json", "table", again, err), 2);
    EXPECT_THAT(err.str(), HasSubstr("none.json"));
}

SORVIK_FLEET_BOTH_DATABASES(FleetCheckTest);

}  // namespace
}  // namespace fleet
}  // namespace audit
