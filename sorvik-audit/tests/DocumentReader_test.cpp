#include "audit/DocumentReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace audit {
namespace {

const std::string kXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<SVMInventory lang=\"en\" schemaVersion=\"1.0\" timestamp=\"2024-03-01 10:22:05\" "
    "sorvikVersion=\"21.09.200 (BLD_1155)\" sorvikBuild=\"1155\">\n"
    "  <OperatingSystem osVendor=\"Debian GNU/Linux\" osCode=\"debian\" osArch=\"x86_64\" "
    "majorVersion=\"12\" "
    "minorVersion=\"\"/>\n"
    "  <System systemID=\"SKU0A1B\"/>\n"
    "  <Device display=\"Ethernet Controller X710\" enum=\"0000:3b:00.0\" function=\"0\" device=\"0\" "
    "bus=\"3b\" "
    "subVendorID=\"8086\" subDeviceID=\"0000\" deviceID=\"1572\" vendorID=\"8086\">\n"
    "    <Application display=\"i40e &amp; co\" version=\"2.22.18\" componentType=\"DRVR\"/>\n"
    "  </Device>\n"
    "  <Device display=\"BIOS\" componentID=\"159\" FQDD=\"BIOS.System.1\">\n"
    "    <Application display=\"Example BIOS (03/14/2023)\" version=\"2.17.1\" componentType=\"BIOS\"/>\n"
    "  </Device>\n"
    "</SVMInventory>\n";

const std::string kJson =
    "{\"UpdatableComponentsInventory\":{\"OperatingSystem\":{\"osVendor\":\"Debian GNU/Linux\","
    "\"osCode\":\"debian\",\"osArch\":\"x86_64\",\"majorVersion\":\"12\",\"minorVersion\":\"\"},"
    "\"System\":{\"systemID\":\"SKU0A1B\"},\"UpdateableComponent\":["
    "{\"name\":\"i40e & co\",\"componentType\":\"DRVR\",\"componentInstance\":\"0000:3b:00.0\","
    "\"vendorID\":\"8086\",\"deviceID\":\"1572\",\"subVendorID\":\"8086\",\"subDeviceID\":\"0000\","
    "\"version\":\"2.22.18\"},"
    "{\"name\":\"Example BIOS (03/14/2023)\",\"componentType\":\"BIOS\",\"componentID\":\"159\","
    "\"version\":\"2.17.1\",\"fqdd\":\"BIOS.System.1\"}]}}\n";

const std::string kErrors =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<InventoryError lang=\"en\">\n"
    "  <SPStatus module=\"/storageinv\" result=\"false\">\n"
    "    <Message>Configured program execution failure</Message>\n  </SPStatus>\n</InventoryError>\n";

// ASCII text as little-endian UTF-16 behind a byte-order mark, the encoding
// line changed as the collector writes it.
std::string Utf16(std::string text) {
    const size_t at = text.find("UTF-8");
    if (at != std::string::npos) text.replace(at, 5, "UTF-16");
    std::string bytes = "\xFF\xFE";
    for (char c : text) bytes += std::string{c, '\0'};
    return bytes;
}

std::string Fields(const Component& c) {
    return c.name + "|" + c.componentType + "|" + c.componentID + "|" + c.componentInstance + "|" + c.fqdd +
           "|" + c.vendorID + "|" + c.deviceID + "|" + c.subVendorID + "|" + c.subDeviceID + "|" + c.version;
}

TEST(DocumentReaderTest, EveryFormGivesTheSameInventory) {
    const struct {
        const char* form;
        std::string bytes;
    } rows[] = {{"XML UTF-8", kXml},
                {"XML UTF-16", Utf16(kXml)},
                {"JSON", kJson},
                {"JSON with BOM", "\xEF\xBB\xBF" + kJson}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.form);
        Inventory inventory;
        std::string error;
        ASSERT_TRUE(ParseInventory(row.bytes, "inv", inventory, error)) << error;
        EXPECT_EQ("inv", inventory.source);
        EXPECT_EQ("SKU0A1B", inventory.systemID);
        EXPECT_EQ("debian", inventory.os.osCode);
        EXPECT_EQ("12", inventory.os.majorVersion);
        ASSERT_EQ(2u, inventory.components.size());
        EXPECT_EQ("i40e & co|DRVR||0000:3b:00.0||8086|1572|8086|0000|2.22.18",
                  Fields(inventory.components[0]));
        EXPECT_EQ("Example BIOS (03/14/2023)|BIOS|159||BIOS.System.1|||||2.17.1",
                  Fields(inventory.components[1]));
        EXPECT_TRUE(inventory.failures.empty());
    }
}

// The collector's standard output when a module failed: the inventory, then
// the error document, in UTF-8 or (with -outc=-) UTF-16.
TEST(DocumentReaderTest, ErrorDocumentAfterTheInventoryGivesTheFailures) {
    for (const std::string& bytes : {kXml + kErrors, Utf16(kXml) + Utf16(kErrors)}) {
        Inventory inventory;
        std::string error;
        ASSERT_TRUE(ParseInventory(bytes, "-", inventory, error)) << error;
        EXPECT_EQ(2u, inventory.components.size());
        ASSERT_EQ(1u, inventory.failures.size());
        EXPECT_EQ("/storageinv", inventory.failures[0].module);
        EXPECT_EQ("Configured program execution failure", inventory.failures[0].message);
    }
}

// Documents are read in pieces of 64 KiB: an error document's declaration, a
// UTF-16 code unit or a surrogate pair split between two pieces is still read.
TEST(DocumentReaderTest, PieceBoundariesSplitNothing) {
    const std::string head = kXml.substr(0, kXml.find("i40e"));
    const std::string tail = kXml.substr(kXml.find(" &amp; co"));
    for (int shift = -8; shift <= 8; ++shift) {
        SCOPED_TRACE(shift);
        // The name pads the inventory so that the error document starts near 65536.
        const std::string name(static_cast<size_t>(65536 + shift) - head.size() - tail.size(), 'n');
        Inventory inventory;
        std::string error;
        ASSERT_TRUE(ParseInventory(head + name + tail + kErrors, "-", inventory, error)) << error;
        ASSERT_EQ(2u, inventory.components.size());
        EXPECT_EQ(name + " & co", inventory.components[0].name);
        ASSERT_EQ(1u, inventory.failures.size());
    }
    // In UTF-16 the padding is letters outside the basic plane, surrogate
    // pairs, one of them split between two pieces for one of the two offsets.
    for (size_t offset : {0u, 1u}) {
        std::string wide = "\xFF\xFE";
        for (char c : head + std::string(offset, 'n')) wide += std::string{c, '\0'};
        for (size_t i = 0; i < 16500; ++i) wide += std::string("\x3D\xD8\x00\xDE", 4);  // U+1F600
        for (char c : tail) wide += std::string{c, '\0'};
        Inventory inventory;
        std::string error;
        ASSERT_TRUE(ParseInventory(wide + Utf16(kErrors), "-", inventory, error)) << error;
        ASSERT_EQ(2u, inventory.components.size());
        EXPECT_EQ(offset + 16500 * 4 + 5, inventory.components[0].name.size());
        EXPECT_EQ("\xF0\x9F\x98\x80", inventory.components[0].name.substr(offset, 4));
        EXPECT_EQ(1u, inventory.failures.size());
    }
}

TEST(DocumentReaderTest, StreamedComponentsGoToTheSinkOnly) {
    char path[] = "/tmp/sorvik-audit-stream-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    const std::string bytes = Utf16(kXml) + Utf16(kErrors);
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), write(fd, bytes.data(), bytes.size()));
    close(fd);
    Inventory inventory;
    std::vector<std::string> seen;
    std::string error;
    ASSERT_TRUE(StreamInventory(
        path, inventory, [&](Component&& component) { seen.push_back(component.name); }, error))
        << error;
    unlink(path);
    EXPECT_EQ((std::vector<std::string>{"i40e & co", "Example BIOS (03/14/2023)"}), seen);
    EXPECT_TRUE(inventory.components.empty());
    EXPECT_EQ("SKU0A1B", inventory.systemID);
    EXPECT_EQ(path, inventory.source);
    ASSERT_EQ(1u, inventory.failures.size());
}

TEST(DocumentReaderTest, ReadsTheErrorDocument) {
    ErrorDocument errors;
    std::string error;
    ASSERT_TRUE(ParseErrorDocument(Utf16(kErrors), "err.xml", errors, error)) << error;
    ASSERT_EQ(1u, errors.failures.size());
    EXPECT_EQ("/storageinv", errors.failures[0].module);
}

TEST(DocumentReaderTest, BadDocumentsNameTheFileAndPlace) {
    const std::string truncated = kXml.substr(0, kXml.find("  <Device display=\"BIOS\""));
    const struct {
        const char* what;
        std::string bytes;
        std::string error;
    } rows[] = {
        {"empty", "", "inv: empty, not an inventory"},
        {"binary",
         "\x7f"
         "ELF",
         "inv:1:1: neither an XML nor a JSON document"},
        {"truncated XML", truncated, "inv:7:12: truncated: the document ends before </SVMInventory>"},
        {"truncated UTF-16 XML", Utf16(truncated),
         "inv:7:12: truncated: the document ends before </SVMInventory>"},
        {"foreign XML", "<?xml version=\"1.0\"?>\n<html><body/></html>",
         "inv:2:6: root element html, not SVMInventory"},
        {"error document as inventory", kErrors,
         "inv:2:26: an error document (root InventoryError), not an inventory"},
        {"unknown element", "<SVMInventory>\n <Disk/></SVMInventory>", "inv:2:7: unexpected element Disk"},
        {"host fields after the devices",
         "<SVMInventory><Device><Application version=\"1\"/></Device><System systemID=\"a\"/></SVMInventory>",
         "inv:1:78: System after a Device"},
        {"device without application", "<SVMInventory><Device display=\"x\"/></SVMInventory>",
         "inv:1:36: Device without an Application"},
        {"other schema version", "<SVMInventory schemaVersion=\"2.0\"/>",
         "inv:1:34: schemaVersion 2.0 is not 1.0"},
        {"trailing error document that is not one", kXml + kXml,
         "inv:13:132: an inventory (root SVMInventory), not an error document"},
        {"entity from a DTD is never expanded",
         "<!DOCTYPE SVMInventory [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>\n<SVMInventory><System "
         "systemID=\"&x;\"/></SVMInventory>",
         "inv:2:36: Entity 'x' not defined"},
        {"odd byte after UTF-16", Utf16(kXml) + "x",
         "inv: broken UTF-16 at byte " + std::to_string(Utf16(kXml).size())},
        {"lone surrogate in UTF-16", Utf16("<SVMInventory>") + std::string("\x00\xDC", 2),
         "inv: broken UTF-16 at byte 30"},
        {"truncated JSON", kJson.substr(0, 80), "inv:1:65: not valid JSON here"},
        {"foreign JSON", "{\"hosts\": []}",
         "inv: $: not an inventory (no UpdatableComponentsInventory object)"},
        {"JSON number where a string belongs",
         "{\"UpdatableComponentsInventory\":{\"UpdateableComponent\":[{\"name\":\"a\",\"version\":2}]}}",
         "inv: $.UpdatableComponentsInventory.UpdateableComponent[0].version: expected a string, found a "
         "number"},
        {"JSON unknown component key",
         "{\"UpdatableComponentsInventory\":{\"UpdateableComponent\":[{\"version\":\"1\",\"firmware\":\"x\"}]"
         "}}",
         "inv: $.UpdatableComponentsInventory.UpdateableComponent[0].firmware: unknown key"},
        {"JSON component without version",
         "{\"UpdatableComponentsInventory\":{\"UpdateableComponent\":[{\"name\":\"x\"}]}}",
         "inv: $.UpdatableComponentsInventory.UpdateableComponent[0]: no version"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Inventory inventory;
        std::string error;
        EXPECT_FALSE(ParseInventory(row.bytes, "inv", inventory, error));
        EXPECT_EQ(row.error, error);
    }
}

}  // namespace
}  // namespace audit
