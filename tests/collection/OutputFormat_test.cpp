#include <cjson/cJSON.h>

#include <memory>

#include "CollectionSupport.h"

namespace collection {
namespace {

// One module's inventory: the operating system, optionally the system, two PCI
// and three non-PCI devices.
std::string SmallInventory(bool withSystem) {
    return std::string("<SVMInventory>\n") +
           "<OperatingSystem osVendor=\"Acme\" osArch=\"x86_64\" majorVersion=\"12\" minorVersion=\"4\" "
           "spMajorVersion=\"1\" name=\"Acme Linux\" osCode=\"LIN\"/>\n" +
           (withSystem ? "<System systemID=\"0627\"/>\n" : "") +
           "<Device vendorID=\"8086\" deviceID=\"1572\" subVendorID=\"1028\" subDeviceID=\"1f9c\" "
           "componentID=\"106\" "
           "display=\"Contr\xC3\xB4leur 10G\" bus=\"3B\" device=\"00\" function=\"1\" enum=\"2\">\n"
           "  <Application componentType=\"FRMW\" version=\"16.5.0\" display=\"Firmware "
           "16.5.0\"/>\n</Device>\n"
           "<Device componentID=\"159\" display=\"BIOS\" enum=\"1\" FQDD=\"BIOS.Setup.1-1\">\n"
           "  <Application componentType=\"BIOS\" version=\"2.1.7\" display=\"BIOS 2.1.7\"/>\n</Device>\n"
           "<Device vendorID=\"aa00\" deviceID=\"00ff\" subVendorID=\"aa01\" subDeviceID=\"0002\" "
           "display=\"Port 2\" "
           "bus=\"zz\" device=\"1f\" function=\"7\">\n"
           "  <Application componentType=\"DRVR\" version=\"3.0\" display=\"Driver 3\"/>\n</Device>\n"
           "<Device componentID=\"300\" display=\"Disk\" FQDD=\"Disk.Bay.0\">\n"
           "  <Application componentType=\"FRMW\" version=\"A1\" display=\"Disk FW\"/>\n</Device>\n"
           "<Device display=\"Fan\"><Application componentType=\"FRMW\" version=\"\" display=\"Fan "
           "FW\"/></Device>\n"
           "</SVMInventory>";
}

const std::string kXmlBody =
    "  <OperatingSystem osVendor=\"Acme\" osCode=\"LIN\" osArch=\"x86_64\" majorVersion=\"12\" "
    "minorVersion=\"4\" "
    "spMajorVersion=\"1\"/>\n"
    "  <System systemID=\"0627\"/>\n"
    "  <Device display=\"Contr\xC3\xB4leur 10G\" enum=\"2\" componentID=\"106\" function=\"1\" device=\"0\" "
    "bus=\"3b\" "
    "subVendorID=\"1028\" subDeviceID=\"1f9c\" deviceID=\"1572\" vendorID=\"8086\">\n"
    "    <Application display=\"Firmware 16.5.0\" version=\"16.5.0\" componentType=\"FRMW\"/>\n"
    "  </Device>\n"
    "  <Device display=\"BIOS\" componentID=\"159\" enum=\"1\" FQDD=\"BIOS.Setup.1-1\">\n"
    "    <Application display=\"BIOS 2.1.7\" version=\"2.1.7\" componentType=\"BIOS\"/>\n"
    "  </Device>\n"
    "  <Device display=\"Port 2\" function=\"7\" device=\"1f\" bus=\"0\" subVendorID=\"aa01\" "
    "subDeviceID=\"0002\" "
    "deviceID=\"00ff\" vendorID=\"aa00\">\n"
    "    <Application display=\"Driver 3\" version=\"3.0\" componentType=\"DRVR\"/>\n"
    "  </Device>\n"
    "  <Device display=\"Disk\" componentID=\"300\" FQDD=\"Disk.Bay.0\">\n"
    "    <Application display=\"Disk FW\" version=\"A1\" componentType=\"FRMW\"/>\n"
    "  </Device>\n"
    "  <Device display=\"Fan\" componentID=\"\">\n"
    "    <Application display=\"Fan FW\" version=\"\" componentType=\"FRMW\"/>\n"
    "  </Device>\n";

std::string JsonCompact(bool withSystem) {
    return std::string(
               "{\"UpdatableComponentsInventory\":{\"OperatingSystem\":{\"name\":\"Acme "
               "Linux\",\"osVendor\":\"Acme\","
               "\"osCode\":\"LIN\",\"osArch\":\"x86_64\",\"majorVersion\":\"12\",\"minorVersion\":\"4\","
               "\"spMajorVersion\":\"1\"},\"System\":") +
           (withSystem ? "{\"systemID\":\"0627\"}" : "{}") +
           ",\"UpdateableComponent\":["
           "{\"name\":\"Firmware "
           "16.5.0\",\"componentType\":\"FRMW\",\"componentID\":\"106\",\"componentInstance\":\"2\","
           "\"vendorID\":\"8086\",\"deviceID\":\"1572\",\"subVendorID\":\"1028\",\"subDeviceID\":\"1f9c\","
           "\"version\":\"16.5.0\"},"
           "{\"name\":\"BIOS "
           "2.1.7\",\"componentType\":\"BIOS\",\"componentID\":\"159\",\"version\":\"2.1.7\","
           "\"componentInstance\":\"1\",\"fqdd\":\"BIOS.Setup.1-1\"},"
           "{\"name\":\"Driver 3\",\"componentType\":\"DRVR\",\"vendorID\":\"aa00\",\"deviceID\":\"00ff\","
           "\"subVendorID\":\"aa01\",\"subDeviceID\":\"0002\",\"version\":\"3.0\"},"
           "{\"name\":\"Disk FW\",\"componentType\":\"FRMW\",\"componentID\":\"300\",\"version\":\"A1\","
           "\"fqdd\":\"Disk.Bay.0\"},"
           "{\"name\":\"Fan FW\",\"componentType\":\"FRMW\",\"componentID\":\"\",\"version\":\"\"}]}}";
}

struct JsonDeleter {
    void operator()(cJSON* json) const { cJSON_Delete(json); }
};
struct TextDeleter {
    void operator()(char* text) const { cJSON_free(text); }
};

// Checks that the text is one formatted JSON document and a newline, and returns
// it printed compactly (member order and value types kept).
std::string CompactJson(const std::string& text) {
    std::unique_ptr<cJSON, JsonDeleter> json(cJSON_Parse(text.c_str()));
    if (!json) {
        ADD_FAILURE() << "not JSON: " << text;
        return "";
    }
    std::unique_ptr<char, TextDeleter> formatted(cJSON_Print(json.get()));
    EXPECT_EQ(text, std::string(formatted.get()) + "\n");
    std::unique_ptr<char, TextDeleter> compact(cJSON_PrintUnformatted(json.get()));
    return compact.get();
}

class OutputFormatSerial : public CollectionTest {
protected:
    void InstallSmallInventory(bool withSystem, bool withFailure = false) const {
        Module module;
        module.name = "inv";
        module.script = Emit(SmallInventory(withSystem));
        Module failing;
        failing.name = "failing";
        failing.script = "exit 3\n";
        Config config;
        config.generations = {{"Generic", {module}}};
        if (withFailure) config.generations[0].second.push_back(failing);
        Install(config);
    }
};

TEST_F(OutputFormatSerial, XmlOnStandardOutputIsUtf8WhateverTheEncodingOption) {
    InstallSmallInventory(true);
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{}, {"-enc=UTF-16"}, {"-enc=UTF-8"}, {"-outf=XML"}}) {
        SCOPED_TRACE(::testing::PrintToString(args));
        const e2e::ProcessResult result = Run(args);
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 1) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(NormalizeTimestamps(result.out), InventoryXml(kXmlBody));
    }
}

TEST_F(OutputFormatSerial, XmlFileIsUtf16UnlessAskedForUtf8) {
    InstallSmallInventory(true);
    const struct {
        std::vector<std::string> args;
        bool utf16;
    } rows[] = {
        {{"-outc=" + dir.PathOf("inv.xml")}, true},
        {{"-o=" + dir.PathOf("inv.xml"), "-enc=UTF-16"}, true},
        {{"-outc=" + dir.PathOf("inv.xml"), "-enc=UTF-8"}, false},
        // Relative to the start directory, although modules ran elsewhere.
        {{"-outc=./inv.xml", "-enc=UTF-8"}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        dir.WriteFile("inv.xml", std::string(20000, 'x'));  // replaced, not overwritten in place
        const e2e::ProcessResult result = Run(row.args);
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 1) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "");
        const std::string bytes = dir.ReadFile("inv.xml");
        if (row.utf16) {
            EXPECT_EQ(NormalizeTimestamps(Utf16LeToUtf8(bytes)), InventoryXml(kXmlBody, "UTF-16"));
        } else {
            EXPECT_EQ(NormalizeTimestamps(bytes), InventoryXml(kXmlBody));
        }
    }
}

TEST_F(OutputFormatSerial, JsonIsUtf8WithFixedKeysAndStringValuesOnly) {
    for (const bool withSystem : {false, true}) {
        SCOPED_TRACE(withSystem ? "with system" : "without system");
        InstallSmallInventory(withSystem);
        for (const std::vector<std::string>& args :
             {std::vector<std::string>{"-outf=JSON"}, {"-outf=JSON", "-enc=UTF-16"}}) {
            SCOPED_TRACE(::testing::PrintToString(args));
            const e2e::ProcessResult result = Run(args);
            ASSERT_TRUE(result.exited) << result.err;
            EXPECT_EQ(result.exitStatus, 1) << result.err;
            EXPECT_EQ(result.err, "");
            EXPECT_EQ(CompactJson(result.out), JsonCompact(withSystem));
        }
    }
}

TEST_F(OutputFormatSerial, JsonFileIsUtf8AndFailuresLeaveNoTrace) {
    InstallSmallInventory(false, true);
    const e2e::ProcessResult result =
        Run({"-outf=JSON", "-outc=" + dir.PathOf("inv.json"), "-logc=" + dir.PathOf("errors.xml")});
    ASSERT_TRUE(result.exited) << result.err;
    EXPECT_EQ(result.exitStatus, 1) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(CompactJson(dir.ReadFile("inv.json")), JsonCompact(false));
    EXPECT_FALSE(dir.Exists("errors.xml"));

    const e2e::ProcessResult toStdout = Run({"-outf=JSON"});
    EXPECT_EQ(CompactJson(toStdout.out), JsonCompact(false));
}

}  // namespace
}  // namespace collection
