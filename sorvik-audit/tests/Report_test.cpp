#include <cjson/cJSON.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>

#include "audit/CheckReport.h"
#include "audit/Output.h"

namespace audit {
namespace {

std::vector<HostVerdicts> Hosts(const Inventory& inventory) {
    Component bios;
    bios.componentType = "BIOS";
    bios.name = "BIOS \"Gen\\10\"\nx";
    bios.fqdd = "BIOS.System.1";
    bios.version = "2.9.0";
    Component nic = bios;
    nic.name = "NIC";
    nic.fqdd = "NIC.1";
    nic.version = "16.35.2000";
    ComponentVerdict outdated{bios, Verdict::Outdated, ">=2.17.1", "below 2.17.1", 0};
    ComponentVerdict compliant{nic, Verdict::Compliant, ">=16", "", 1};
    ComponentVerdict unmatched{nic, Verdict::Unmatched, "", "", -1};
    return {{&inventory, {outdated, compliant, unmatched}}};
}

Inventory Host() {
    Inventory inventory;
    inventory.source = "inv.xml";
    inventory.systemID = "0A1B";
    inventory.failures = {{"/storageinv", "x"}};
    return inventory;
}

TEST(ReportTest, PrometheusSeriesPerMatchedComponentWithEscapedLabels) {
    const Inventory inventory = Host();
    EXPECT_EQ(
        "# HELP sorvik_component_compliant 1 when the component's version meets the baseline, else 0.\n"
        "# TYPE sorvik_component_compliant gauge\n"
        "sorvik_component_compliant{system_id=\"0A1B\",component_type=\"BIOS\",name=\"BIOS "
        "\\\"Gen\\\\10\\\"\\nx\","
        "component_id=\"\",component_instance=\"\",fqdd=\"BIOS.System.1\",vendor_id=\"\",device_id=\"\","
        "sub_vendor_id=\"\",sub_device_id=\"\",version=\"2.9.0\",expected=\">=2.17.1\",verdict=\"outdated\"} "
        "0\n"
        "sorvik_component_compliant{system_id=\"0A1B\",component_type=\"BIOS\",name=\"NIC\",component_id="
        "\"\","
        "component_instance=\"\",fqdd=\"NIC.1\",vendor_id=\"\",device_id=\"\",sub_vendor_id=\"\",sub_device_"
        "id=\"\","
        "version=\"16.35.2000\",expected=\">=16\",verdict=\"compliant\"} 1\n"
        "# HELP sorvik_audit_last_run_timestamp_seconds When sorvik-audit check wrote this file, in Unix "
        "time.\n"
        "# TYPE sorvik_audit_last_run_timestamp_seconds gauge\n"
        "sorvik_audit_last_run_timestamp_seconds 1700000000\n",
        CheckPrometheus(Hosts(inventory), 1700000000));
}

TEST(ReportTest, JsonReportIsValidAndVersioned) {
    const Inventory inventory = Host();
    const std::string text = CheckJson(Hosts(inventory), "b.json");
    std::unique_ptr<cJSON, void (*)(cJSON*)> json(cJSON_Parse(text.c_str()), cJSON_Delete);
    ASSERT_TRUE(json) << text;
    EXPECT_EQ(1, cJSON_GetObjectItem(json.get(), "reportVersion")->valueint);
    EXPECT_TRUE(cJSON_IsFalse(cJSON_GetObjectItem(json.get(), "compliant")));
    const cJSON* host = cJSON_GetArrayItem(cJSON_GetObjectItem(json.get(), "inventories"), 0);
    EXPECT_STREQ("/storageinv",
                 cJSON_GetArrayItem(cJSON_GetObjectItem(host, "failedModules"), 0)->valuestring);
    const cJSON* first = cJSON_GetArrayItem(cJSON_GetObjectItem(host, "components"), 0);
    const struct {
        const char* key;
        const char* value;
    } members[] = {{"verdict", "outdated"},
                   {"version", "2.9.0"},
                   {"expected", ">=2.17.1"},
                   {"name", "BIOS \"Gen\\10\"\nx"},
                   {"fqdd", "BIOS.System.1"},
                   {"componentType", "BIOS"},
                   {"key", "BIOS/fqdd=BIOS.System.1/BIOS \"Gen\\10\"\nx"}};
    for (const auto& member : members)
        EXPECT_STREQ(member.value, cJSON_GetObjectItem(first, member.key)->valuestring) << member.key;
    EXPECT_EQ(nullptr, cJSON_GetObjectItem(first, "vendorID"));  // empty fields are left out
    EXPECT_EQ(1, cJSON_GetObjectItem(cJSON_GetObjectItem(json.get(), "summary"), "unmatched")->valueint);
}

TEST(ReportTest, TableAlignsColumnsAndColoursOnlyWhenAsked) {
    Inventory inventory = Host();
    auto hosts = Hosts(inventory);
    hosts[0].verdicts[0].component.name = "Contrôleur";
    const std::string plain = CheckTable(hosts, false);
    EXPECT_EQ(
        "VERDICT    HOST  TYPE  NAME        VERSION     EXPECTED  REASON\n"
        "outdated   0A1B  BIOS  Contrôleur  2.9.0       >=2.17.1  below 2.17.1\n"
        "compliant  0A1B  BIOS  NIC         16.35.2000  >=16\n"
        "unmatched  0A1B  BIOS  NIC         16.35.2000\n"
        "3 components: 1 compliant, 1 outdated, 1 unmatched\n",
        plain);
    EXPECT_EQ(std::string::npos, plain.find('\033'));
    EXPECT_NE(std::string::npos, CheckTable(hosts, true).find("\033[31moutdated\033[0m"));
}

TEST(ReportTest, ColourOnlyOnATerminalWithoutNoColor) {
    EXPECT_TRUE(ColourWanted(true, nullptr));
    EXPECT_TRUE(ColourWanted(true, ""));
    EXPECT_FALSE(ColourWanted(true, "1"));
    EXPECT_FALSE(ColourWanted(false, nullptr));
}

TEST(ReportTest, AtomicWriteReplacesTheFileAndLeavesNoTemporary) {
    char pattern[] = "/tmp/sorvik-audit-out-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    const std::string dir = pattern;
    const std::string path = dir + "/metrics.prom";
    std::string error;
    ASSERT_TRUE(WriteFileAtomically(path, "old\n", error)) << error;
    ASSERT_TRUE(WriteFileAtomically(path, "new\n", error)) << error;
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_EQ("new\n", text.str());
    struct stat info;
    ASSERT_EQ(0, stat(path.c_str(), &info));
    EXPECT_EQ(0644u, info.st_mode & 0777);
    EXPECT_FALSE(WriteFileAtomically(dir + "/missing/metrics.prom", "x", error));
    EXPECT_EQ(
        dir + "/missing/metrics.prom: cannot create a temporary file beside it: No such file or directory",
        error);
    EXPECT_EQ(0, std::remove(path.c_str()));
    EXPECT_EQ(0, rmdir(dir.c_str())) << "a temporary file was left behind";
}

}  // namespace
}  // namespace audit
