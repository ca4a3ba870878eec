#include <cjson/cJSON.h>

#include <memory>

#include "CollectionSupport.h"

namespace collection {
namespace {

// The operating system, the system, a PCI and two non-PCI devices.
const std::string kModuleDocument =
    "<SVMInventory>\n"
    "<OperatingSystem osVendor=\"Acme\" osArch=\"x86_64\" majorVersion=\"12\" minorVersion=\"4\" "
    "spMajorVersion=\"1\" name=\"Acme Linux\" osCode=\"LIN\"/>\n"
    "<System systemID=\"0627\"/>\n"
    "<Device vendorID=\"8086\" deviceID=\"1572\" subVendorID=\"1028\" subDeviceID=\"1f9c\" "
    "componentID=\"106\" display=\"Contr\xC3\xB4leur 10G\" bus=\"3B\" device=\"00\" function=\"1\" "
    "enum=\"2\">\n  <Application componentType=\"FRMW\" version=\"16.5.0\" display=\"NIC FW\"/>\n"
    "</Device>\n"
    "<Device componentID=\"159\" display=\"BIOS\" enum=\"1\" FQDD=\"BIOS.Setup.1-1\">\n"
    "  <Application componentType=\"BIOS\" version=\"2.1.7\" display=\"BIOS 2.1.7\"/>\n</Device>\n"
    "<Device display=\"Fan\"><Application componentType=\"FRMW\" version=\"\" display=\"Fan FW\"/>"
    "</Device>\n</SVMInventory>";

const std::string kXmlBody =
    "  <OperatingSystem osVendor=\"Acme\" osCode=\"LIN\" osArch=\"x86_64\" majorVersion=\"12\" "
    "minorVersion=\"4\" spMajorVersion=\"1\"/>\n"
    "  <System systemID=\"0627\"/>\n"
    "  <Device display=\"Contr\xC3\xB4leur 10G\" enum=\"2\" componentID=\"106\" function=\"1\" device=\"0\" "
    "bus=\"3b\" subVendorID=\"1028\" subDeviceID=\"1f9c\" deviceID=\"1572\" vendorID=\"8086\">\n"
    "    <Application display=\"NIC FW\" version=\"16.5.0\" componentType=\"FRMW\"/>\n  </Device>\n"
    "  <Device display=\"BIOS\" componentID=\"159\" enum=\"1\" FQDD=\"BIOS.Setup.1-1\">\n"
    "    <Application display=\"BIOS 2.1.7\" version=\"2.1.7\" componentType=\"BIOS\"/>\n  </Device>\n"
    "  <Device display=\"Fan\" componentID=\"\">\n"
    "    <Application display=\"Fan FW\" version=\"\" componentType=\"FRMW\"/>\n  </Device>\n";

const std::string kJson =
    "{\"UpdatableComponentsInventory\":{\"OperatingSystem\":{\"name\":\"Acme Linux\",\"osVendor\":"
    "\"Acme\",\"osCode\":\"LIN\",\"osArch\":\"x86_64\",\"majorVersion\":\"12\",\"minorVersion\":"
    "\"4\",\"spMajorVersion\":\"1\"},\"System\":{\"systemID\":\"0627\"},"
    "\"UpdateableComponent\":["
    "{\"name\":\"NIC FW\",\"componentType\":\"FRMW\",\"componentID\":\"106\","
    "\"componentInstance\":\"2\",\"vendorID\":\"8086\",\"deviceID\":\"1572\",\"subVendorID\":\"1028\","
    "\"subDeviceID\":\"1f9c\",\"version\":\"16.5.0\"},"
    "{\"name\":\"BIOS 2.1.7\",\"componentType\":\"BIOS\",\"componentID\":\"159\","
    "\"version\":\"2.1.7\",\"componentInstance\":\"1\",\"fqdd\":\"BIOS.Setup.1-1\"},"
    "{\"name\":\"Fan FW\",\"componentType\":\"FRMW\",\"componentID\":\"\",\"version\":\"\"}]}}";

// Checks that the text is one formatted JSON document and a newline; returns it
// printed compactly, member order and value types kept.
std::string CompactJson(const std::string& text) {
    std::unique_ptr<cJSON, void (*)(cJSON*)> json(cJSON_Parse(text.c_str()), cJSON_Delete);
    if (!json) {
        ADD_FAILURE() << "not JSON: " << text;
        return "";
    }
    std::unique_ptr<char, void (*)(void*)> formatted(cJSON_Print(json.get()), cJSON_free);
    EXPECT_EQ(text, std::string(formatted.get()) + "\n");
    std::unique_ptr<char, void (*)(void*)> compact(cJSON_PrintUnformatted(json.get()), cJSON_free);
    return compact.get();
}

using OutputFormatTest = CollectionTest;

// Which document goes where in which encoding is the output manager's golden
// table; these rows are the options' way there from the command line, with a
// module's document carried through to the bytes.
TEST_F(OutputFormatTest, FormatEncodingAndFilesReachTheWriters) {
    Install(GenericOnly({Module{"inv", Emit(kModuleDocument)}, Module{"failing", "exit 3\n"}}));
    const auto errors = [](const char* encoding) { return ErrorXml({{"/failing", kFailed}}, encoding); };
    const std::string log = dir.PathOf("err.xml");
    const struct {
        Args args;
        std::string out;        // standard output, timestamps normalized; kJson: compared as JSON
        const char* inventory;  // encoding of inv.xml, "JSON" for inv.json, null: neither written
        const char* errorLog;   // encoding of err.xml, null: not written
    } rows[] = {
        {{}, InventoryXml(kXmlBody) + errors("UTF-8"), nullptr, nullptr},
        // Relative to the start directory, although modules ran elsewhere.
        {{"-outc=./inv.xml"}, errors("UTF-8"), "UTF-16", nullptr},
        {{"-o=" + dir.PathOf("inv.xml"), "-logc=" + log}, "", "UTF-16", "UTF-16"},
        {{"-outc=./inv.xml", "-l=" + log, "-enc=UTF-8"}, "", "UTF-8", "UTF-8"},
        // JSON is UTF-8 whatever is asked, and has no error document.
        {{"-outf=JSON", "-enc=UTF-16"}, kJson, nullptr, nullptr},
        {{"-outf=JSON", "-o=" + dir.PathOf("inv.json"), "-l=" + log}, "", "JSON", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        dir.WriteFile("inv.xml", std::string(20000, 'x'));  // replaced, not overwritten in place
        ::unlink(log.c_str());
        ::unlink(dir.PathOf("inv.json").c_str());
        const ProcessResult result = Run(row.args);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.err, "");
        if (row.out == kJson) {
            EXPECT_EQ(CompactJson(result.out), kJson);
        } else {
            EXPECT_EQ(NormalizeTimestamps(result.out), row.out);
        }
        const std::string inventory = row.inventory ? row.inventory : "";
        if (inventory == "JSON") {
            EXPECT_EQ(CompactJson(dir.ReadFile("inv.json")), kJson);
        } else if (!inventory.empty()) {
            const std::string bytes = dir.ReadFile("inv.xml");
            EXPECT_EQ(NormalizeTimestamps(inventory == "UTF-8" ? bytes : Utf16LeToUtf8(bytes)),
                      InventoryXml(kXmlBody, inventory));
        }
        EXPECT_EQ(dir.Exists("inv.json"), inventory == "JSON");
        ASSERT_EQ(dir.Exists("err.xml"), row.errorLog != nullptr);
        if (row.errorLog == nullptr) continue;
        const std::string bytes = dir.ReadFile("err.xml");
        EXPECT_EQ(row.errorLog[4] == '8' ? bytes : Utf16LeToUtf8(bytes), errors(row.errorLog));
    }
}

}  // namespace
}  // namespace collection
