#include <cjson/cJSON.h>

#include <memory>

#include "CollectionSupport.h"

namespace collection {
namespace {

// The operating system, optionally the system, a PCI and two non-PCI devices.
std::string SmallInventory(bool withSystem) {
    return std::string("<SVMInventory>\n") +
           "<OperatingSystem osVendor=\"Acme\" osArch=\"x86_64\" majorVersion=\"12\" minorVersion=\"4\" "
           "spMajorVersion=\"1\" name=\"Acme Linux\" osCode=\"LIN\"/>\n" +
           (withSystem ? "<System systemID=\"0627\"/>\n" : "") +
           "<Device vendorID=\"8086\" deviceID=\"1572\" subVendorID=\"1028\" subDeviceID=\"1f9c\" "
           "componentID=\"106\" display=\"Contr\xC3\xB4leur 10G\" bus=\"3B\" device=\"00\" function=\"1\" "
           "enum=\"2\">\n  <Application componentType=\"FRMW\" version=\"16.5.0\" display=\"NIC FW\"/>\n"
           "</Device>\n"
           "<Device componentID=\"159\" display=\"BIOS\" enum=\"1\" FQDD=\"BIOS.Setup.1-1\">\n"
           "  <Application componentType=\"BIOS\" version=\"2.1.7\" display=\"BIOS 2.1.7\"/>\n</Device>\n"
           "<Device display=\"Fan\"><Application componentType=\"FRMW\" version=\"\" display=\"Fan FW\"/>"
           "</Device>\n</SVMInventory>";
}

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

std::string JsonCompact(bool withSystem) {
    return std::string(
               "{\"UpdatableComponentsInventory\":{\"OperatingSystem\":{\"name\":\"Acme Linux\",\"osVendor\":"
               "\"Acme\",\"osCode\":\"LIN\",\"osArch\":\"x86_64\",\"majorVersion\":\"12\",\"minorVersion\":"
               "\"4\",\"spMajorVersion\":\"1\"},\"System\":") +
           (withSystem ? "{\"systemID\":\"0627\"}" : "{}") +
           ",\"UpdateableComponent\":["
           "{\"name\":\"NIC FW\",\"componentType\":\"FRMW\",\"componentID\":\"106\","
           "\"componentInstance\":\"2\",\"vendorID\":\"8086\",\"deviceID\":\"1572\",\"subVendorID\":\"1028\","
           "\"subDeviceID\":\"1f9c\",\"version\":\"16.5.0\"},"
           "{\"name\":\"BIOS 2.1.7\",\"componentType\":\"BIOS\",\"componentID\":\"159\","
           "\"version\":\"2.1.7\",\"componentInstance\":\"1\",\"fqdd\":\"BIOS.Setup.1-1\"},"
           "{\"name\":\"Fan FW\",\"componentType\":\"FRMW\",\"componentID\":\"\",\"version\":\"\"}]}}";
}

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

class OutputFormatTest : public CollectionTest {
protected:
    void InstallSmallInventory(bool withSystem, bool withFailure = false) const {
        std::vector<Module> modules = {Module{"inv", Emit(SmallInventory(withSystem))}};
        if (withFailure) modules.push_back(Module{"failing", "exit 3\n"});
        Install(GenericOnly(modules));
    }
};

TEST_F(OutputFormatTest, XmlIsUtf8OnStandardOutputAndUtf16InAFileUnlessAskedForUtf8) {
    InstallSmallInventory(true);
    const struct {
        Args args;
        const char* fileEncoding;  // null: to standard output
    } rows[] = {
        {{}, nullptr},
        {{"-enc=UTF-16"}, nullptr},
        {{"-outc=" + dir.PathOf("inv.xml")}, "UTF-16"},
        {{"-outc=" + dir.PathOf("inv.xml"), "-enc=UTF-8"}, "UTF-8"},
        // Relative to the start directory, although modules ran elsewhere.
        {{"-outc=./inv.xml", "-enc=UTF-8"}, "UTF-8"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        dir.WriteFile("inv.xml", std::string(20000, 'x'));  // replaced, not overwritten in place
        ExpectResult(Run(row.args), 1, row.fileEncoding ? "" : InventoryXml(kXmlBody));
        if (row.fileEncoding == nullptr) continue;
        const std::string file = dir.ReadFile("inv.xml");
        EXPECT_EQ(NormalizeTimestamps(row.fileEncoding[4] == '8' ? file : Utf16LeToUtf8(file)),
                  InventoryXml(kXmlBody, row.fileEncoding));
    }
}

TEST_F(OutputFormatTest, JsonIsUtf8WithFixedKeysAndStringValuesAndNoErrorDocument) {
    const struct {
        bool withSystem;
        Args args;
        const char* file;  // null: to standard output
    } rows[] = {
        // clang-format off
        {true, {"-outf=JSON"}, nullptr},
        {false, {"-outf=JSON", "-enc=UTF-16"}, nullptr},
        {false, {"-outf=JSON", "-o=" + dir.PathOf("inv.json"), "-l=" + dir.PathOf("err.xml")}, "inv.json"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        InstallSmallInventory(row.withSystem, true);
        const ProcessResult result = Run(row.args);
        EXPECT_EQ(result.exitStatus, 1) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(CompactJson(row.file ? dir.ReadFile(row.file) : result.out), JsonCompact(row.withSystem));
        EXPECT_EQ(result.out.empty(), row.file != nullptr);
        EXPECT_FALSE(dir.Exists("err.xml"));
    }
}

TEST_F(OutputFormatTest, FailuresGoToTheLogFileOrAfterTheInventory) {
    const std::string log = dir.PathOf("err.xml");
    const struct {
        bool failures;
        Args args;
        bool errorsOnStdout;
        const char* logEncoding;  // null: no log file written
    } rows[] = {
        {false, {}, false, nullptr},
        {false, {"-logc=" + log}, false, nullptr},
        {true, {}, true, nullptr},
        {true, {"-enc=UTF-16"}, true, nullptr},
        {true, {"-logc=" + log}, false, "UTF-16"},
        {true, {"-l=" + log, "-enc=UTF-8"}, false, "UTF-8"},
    };
    const auto errors = [](const std::string& encoding) {
        return ErrorXml({{"/empty", kFailed}, {"/reported", "a &amp; b"}}, encoding);
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args) + (row.failures ? " with failures" : ""));
        std::vector<Module> modules = {Module{"dev", Emit(DeviceDoc("7"))}};
        const std::string reported =
            "<SVMInventory><SPStatus result=\"false\"><Message>a &amp; b</Message></SPStatus></SVMInventory>";
        if (row.failures)
            modules.insert(modules.end(), {Module{"empty", ""}, Module{"reported", Emit(reported)}});
        Install(GenericOnly(modules));
        ::unlink(log.c_str());
        Args args = row.args;
        args.push_back("-serialize=yes");
        ExpectResult(Run(args), 1,
                     InventoryXml(DeviceBody("7")) + (row.errorsOnStdout ? errors("UTF-8") : ""));
        ASSERT_EQ(dir.Exists("err.xml"), row.logEncoding != nullptr);
        if (row.logEncoding == nullptr) continue;
        const std::string bytes = dir.ReadFile("err.xml");
        EXPECT_EQ(row.logEncoding[4] == '8' ? bytes : Utf16LeToUtf8(bytes), errors(row.logEncoding));
    }
}

}  // namespace
}  // namespace collection
