#include <regex>

#include "CollectionSupport.h"

namespace collection {
namespace {

const char kDevice[] =
    "<SVMInventory><Device componentID=\"7\" display=\"Seven\">"
    "<Application componentType=\"FRMW\" version=\"1.2\" display=\"Seven FW\"/></Device></SVMInventory>";

class ExitStatusSerial : public CollectionTest {};

TEST_F(ExitStatusSerial, OneWhenDevicesWereCollectedElseZero) {
    const struct {
        const char* name;
        std::vector<Module> modules;
        int exitStatus;
    } rows[] = {
        {"a device", {Module{"dev", Emit(kDevice)}, Module{"empty", "exit 0\n"}}, 1},
        {"failures only", {Module{"empty", "exit 0\n"}}, 0},
        {"system and operating system only",
         {Module{"sys",
                 Emit("<SVMInventory><System systemID=\"1\"/><OperatingSystem osVendor=\"V\" osArch=\"A\" "
                      "majorVersion=\"1\" minorVersion=\"0\" osCode=\"C\"/></SVMInventory>")}},
         0},
        {"no modules", {}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Config config;
        config.generations = {{"Generic", row.modules}};
        Install(config);
        const e2e::ProcessResult result = Run({});
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, row.exitStatus) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out.compare(0, 6, "<?xml "), 0) << result.out;
    }
}

TEST_F(ExitStatusSerial, NoModuleSectionsGiveAnEmptyInventory) {
    WriteConfigText("{\"Other\": {\"Generation\": []}}");
    const e2e::ProcessResult result = Run({});
    ASSERT_TRUE(result.exited) << result.err;
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(NormalizeTimestamps(result.out), InventoryXml(""));
}

TEST_F(ExitStatusSerial, TwoWithTheExceptionTextWhenTheConfigurationCannotBeRead) {
    const std::regex text(
        "Caught IC Exception in main : CQVRICException - \\[Error occurred during parsing icconfig\\.json "
        "file\\]"
        "\n\t at PopulateModuleList\\(qvr[^:()]*:[0-9]+\\)"
        "(\\]\n\t at [A-Za-z]+\\(qvr[^:()]*:[0-9]+\\))*"
        "\\]\n\t at GetICInventory\\(qvr[^:()]*:[0-9]+\\)\n");
    const struct {
        const char* name;
        const char* config;  // null: no file
        const char* out;
    } rows[] = {
        {"missing", nullptr, "Error! Incorrect file!!\n"},
        {"empty", "", ""},
        {"malformed", "{\"SorVikConfig\": {", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ::unlink(dir.PathOf("icconfig_new.json").c_str());
        if (row.config != nullptr) WriteConfigText(row.config);
        const e2e::ProcessResult result = Run({});
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.out, row.out);
        EXPECT_TRUE(std::regex_match(result.err, text)) << result.err;
        EXPECT_FALSE(e2e::PathExists(kLockFile));
    }
}

TEST_F(ExitStatusSerial, ThreeForASecondInstanceWhichRunsNothing) {
    Config config;
    config.preInstall = {Module{"pre", Append(dir.PathOf("ran.log"), "pre")}};
    config.generations = {{"Generic", {Module{"dev", Append(dir.PathOf("ran.log"), "dev") + Emit(kDevice)}}}};
    Install(config);
    {
        e2e::ExternalFileLock holder(kLockFile);
        const e2e::ProcessResult result = Run({"-outc=" + dir.PathOf("inv.xml")});
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 3);
        EXPECT_EQ(result.err, kAnotherInstance);
        EXPECT_EQ(result.out, "");
        EXPECT_FALSE(dir.Exists("ran.log"));
        EXPECT_FALSE(dir.Exists("inv.xml"));
        EXPECT_TRUE(e2e::PathExists(kLockFile));  // the holder's file stays
    }
    ::unlink(kLockFile);
}

}  // namespace
}  // namespace collection
