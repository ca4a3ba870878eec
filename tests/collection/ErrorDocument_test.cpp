#include "CollectionSupport.h"

namespace collection {
namespace {

const char kDevice[] =
    "<SVMInventory><Device componentID=\"7\" display=\"Seven\">"
    "<Application componentType=\"FRMW\" version=\"1.2\" display=\"Seven FW\"/></Device></SVMInventory>";
const char kDeviceBody[] =
    "  <Device display=\"Seven\" componentID=\"7\">\n"
    "    <Application display=\"Seven FW\" version=\"1.2\" componentType=\"FRMW\"/>\n"
    "  </Device>\n";

class ErrorDocumentSerial : public CollectionTest {
protected:
    // Modules run one at a time in this order: a device, two empty outputs
    // around a reported error.
    void InstallWithFailures() const {
        Module device{"dev", Emit(kDevice)};
        Module empty1{"empty1", "exit 0\n"};
        Module reported{"reported",
                        Emit("<SVMInventory><SPStatus result=\"false\"><Message>boom &amp; bust</Message>"
                             "</SPStatus></SVMInventory>")};
        Module empty2{"empty2", "exit 0\n"};
        Config config;
        config.generations = {{"Generic", {device, empty1, reported, empty2}}};
        Install(config);
    }
    std::string Errors(const std::string& encoding = "UTF-8") const {
        return ErrorXml({{"/empty1", "Configured program execution failure"},
                         {"/reported", "boom &amp; bust"},
                         {"/empty2", "Configured program execution failure"}},
                        encoding);
    }
};

TEST_F(ErrorDocumentSerial, WithoutFailuresNoErrorDocumentIsWritten) {
    Config config;
    config.generations = {{"Generic", {Module{"dev", Emit(kDevice)}}}};
    Install(config);
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{}, {"-logc=" + dir.PathOf("errors.xml")}}) {
        SCOPED_TRACE(::testing::PrintToString(args));
        const e2e::ProcessResult result = Run(args);
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 1) << result.err;
        EXPECT_EQ(NormalizeTimestamps(result.out), InventoryXml(kDeviceBody));
        EXPECT_FALSE(dir.Exists("errors.xml"));
    }
}

TEST_F(ErrorDocumentSerial, WithoutLogFileFailuresFollowTheInventoryOnStandardOutput) {
    InstallWithFailures();
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"-serialize=yes"}, {"-serialize=yes", "-enc=UTF-16"}}) {
        SCOPED_TRACE(::testing::PrintToString(args));
        const e2e::ProcessResult result = Run(args);
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 1) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(NormalizeTimestamps(result.out), InventoryXml(kDeviceBody) + Errors());
    }
}

TEST_F(ErrorDocumentSerial, LogFileTakesTheFailuresInTheFileEncoding) {
    InstallWithFailures();
    const std::string log = dir.PathOf("errors.xml");
    const std::string out = dir.PathOf("inv.xml");
    const struct {
        std::vector<std::string> args;
        bool inventoryOnStdout;
        bool utf16;
    } rows[] = {
        {{"-serialize=yes", "-logc=" + log}, true, true},
        {{"-serialize=yes", "-l=" + log, "-enc=UTF-8"}, true, false},
        {{"-serialize=yes", "-logc=" + log, "-outc=" + out, "-enc=UTF-16"}, false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        ::unlink(log.c_str());
        const e2e::ProcessResult result = Run(row.args);
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 1) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(NormalizeTimestamps(result.out), row.inventoryOnStdout ? InventoryXml(kDeviceBody) : "");
        ASSERT_TRUE(dir.Exists("errors.xml"));
        const std::string bytes = dir.ReadFile("errors.xml");
        EXPECT_EQ(row.utf16 ? Utf16LeToUtf8(bytes) : bytes, Errors(row.utf16 ? "UTF-16" : "UTF-8"));
    }
}

}  // namespace
}  // namespace collection
