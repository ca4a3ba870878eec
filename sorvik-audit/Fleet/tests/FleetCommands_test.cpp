#include "audit/fleet/FleetCommands.h"

#include <cjson/cJSON.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sstream>

#include "FleetTestSupport.h"
#include "audit/Commands.h"
#include "audit/fleet/FleetCommandLine.h"

namespace audit {
namespace fleet {
namespace {

using testing::FleetDatabaseTest;
using ::testing::HasSubstr;
using testing::WriteFile;

// A JSON inventory as the collector writes it, with one NIC at nic.
std::string JsonInventory(const std::string& nic) {
    return R"({"UpdatableComponentsInventory": {"System": {"systemID": "0A2B"}, "UpdateableComponent": [
        {"name": "BIOS", "componentType": "BIOS", "componentID": "159", "version": "2.17.1", "fqdd": "BIOS.Setup.1-1"},
        {"name": "Ethernet 10G", "componentType": "FRMW", "componentInstance": "0000:3b:00.0", "vendorID": "8086",
         "deviceID": "1572", "subVendorID": "8086", "subDeviceID": "0006", "version": ")" +
           nic + R"("}]}})";
}

class FleetCommandsTest : public FleetDatabaseTest {};

// The program's own readers: documents in the collector's forms, a broken
// one reported by name with the place, the others loaded and drifting.
TEST_P(FleetCommandsTest, LoadsTheCollectorsDocumentsAndReportsDrift) {
    std::string fleet = dir_ + "/inventory";
    ASSERT_EQ(mkdir(fleet.c_str(), 0755), 0);
    for (int i = 0; i < 11; ++i)
        WriteFile(fleet + "/web" + std::to_string(i) + ".json", JsonInventory("20.5.13"));
    WriteFile(fleet + "/db1.json", JsonInventory("19.5.12"));
    WriteFile(fleet + "/broken.json", R"({"UpdatableComponentsInventory": {"System": )");
    std::ostringstream err;
    EXPECT_EQ(RunLoad(url_, "", {fleet}, err, false), 1);
    EXPECT_THAT(err.str(), HasSubstr(fleet + "/broken.json"));
    EXPECT_EQ(err.str().find("web"), std::string::npos) << err.str();
    EXPECT_EQ(Counts().collections, 12);

    std::ostringstream out, driftErr;
    EXPECT_EQ(RunDrift(url_, "json", 10, out, driftErr), 0) << driftErr.str();
    std::unique_ptr<cJSON, void (*)(cJSON*)> root(cJSON_Parse(out.str().c_str()), cJSON_Delete);
    ASSERT_TRUE(root) << out.str();
    cJSON* groups = cJSON_GetObjectItem(root.get(), "groups");
    ASSERT_EQ(cJSON_GetArraySize(groups), 1) << out.str();
    cJSON* outliers = cJSON_GetObjectItem(cJSON_GetArrayItem(groups, 0), "outliers");
    ASSERT_EQ(cJSON_GetArraySize(outliers), 1);
    EXPECT_STREQ(cJSON_GetObjectItem(cJSON_GetArrayItem(outliers, 0), "host")->valuestring, "db1");

    // Loaded again under another name, the documents are another host's; on
    // a terminal the load shows its progress and what it did.
    std::ostringstream again;
    EXPECT_EQ(RunLoad(url_, "spare", {fleet + "/db1.json", fleet + "/web1.json"}, again, true), 0)
        << again.str();
    EXPECT_EQ(Counts().hosts, 13);
    EXPECT_THAT(again.str(), HasSubstr("\rloaded 2/2 files ("));
    EXPECT_THAT(again.str(), ::testing::EndsWith("\nloaded 2, already stored 0, failed 0\n"));
}

SORVIK_FLEET_BOTH_DATABASES(FleetCommandsTest);

TEST(FleetCommandLineTest, AStoreThatCannotBeOpenedIsTrouble) {
    std::string dir = testing::MakeTempDir("sorvik-fleet-commands");
    std::string blocked = dir + "/file";
    WriteFile(blocked, "");
    std::ostringstream out, err;
    EXPECT_EQ(RunDrift("sqlite:" + blocked + "/fleet.db", "table", 10, out, err), 2);
    EXPECT_THAT(err.str(), HasSubstr(blocked));
    EXPECT_EQ(RunLoad("sqlite:" + blocked + "/fleet.db", "", {dir}, err, false), 2);
    testing::RemoveTree(dir);
}

// The command line as main() builds it.
TEST(FleetCommandLineTest, AcceptsAndRefusesAsDocumented) {
    struct Row {
        std::vector<std::string> args;
        bool parses;
        bool fleet;  // a fleet command, when it parses
    };
    const Row rows[] = {
        {{"check", "--baseline", "b.json", "--db", "sqlite:/tmp/x.db"}, true, true},
        {{"check", "--baseline", "b.json", "host.json"}, true, false},
        {{"check", "--baseline", "b.json"}, false, false},
        {{"check", "--baseline", "b.json", "--db", "sqlite:/tmp/x.db", "host.json"}, false, false},
        {{"check", "--baseline", "b.json", "--db", "sqlite:/tmp/x.db", "--errors", "e.xml"}, false, false},
        {{"check", "--baseline", "b.json", "--db", "sqlite:/tmp/x.db", "-o", "report.json"}, false, false},
        {{"check", "--baseline", "b.json", "--db", "sqlite:/tmp/x.db", "--all"}, false, false},
        {{"check", "--baseline", "b.json", "--all", "-o", "report.json", "host.json"}, true, false},
        {{"drift", "--max-share", "2.5", "--format", "json"}, true, true},
        {{"drift", "--max-share", "150"}, false, false},
        {{"drift", "--format", "prometheus"}, false, false},
        {{"load", "a.json", "inventory/"}, true, true},
        {{"load"}, false, false},
        {{"diff", "a.json", "b.json"}, true, false},
    };
    for (const Row& row : rows) {
        CLI::App app;
        CheckOptions check;
        DiffOptions diff;
        CLI::App* checkCommand = AddCheckCommand(app, check);
        AddDiffCommand(app, diff);
        FleetCommandLine fleet(app, *checkCommand);
        std::vector<std::string> args(row.args.rbegin(), row.args.rend());
        bool parsed = true;
        try {
            app.parse(args);
        } catch (const CLI::ParseError&) {
            parsed = false;
        }
        EXPECT_EQ(parsed, row.parses) << ::testing::PrintToString(row.args);
        if (parsed) {
            EXPECT_EQ(fleet.Selected(), row.fleet) << ::testing::PrintToString(row.args);
        }
    }
}

TEST(FleetCommandLineTest, CheckOverAStoreWritesNoPrometheus) {
    std::ostringstream out, err;
    EXPECT_EQ(RunFleetCheck("sqlite:/nonexistent/fleet.db", "b.json", "prometheus", out, err), 2);
    EXPECT_THAT(err.str(), HasSubstr("table or json"));
}

}  // namespace
}  // namespace fleet
}  // namespace audit
