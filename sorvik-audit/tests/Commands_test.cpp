#include "audit/Commands.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace audit {
namespace {

// A scratch directory with the files a run reads, and a console on strings.
class CommandsTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/sorvik-audit-commands-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        m_dir = pattern;
        console.out = &out;
        console.err = &err;
        console.colour = true;  // a terminal; files never get colour
        console.now = [] { return std::time_t{1700000000}; };
    }
    void TearDown() override {
        for (const std::string& file : m_files) std::remove(file.c_str());
        rmdir(m_dir.c_str());
    }
    std::string Write(const std::string& name, const std::string& text) {
        const std::string path = m_dir + "/" + name;
        std::ofstream(path) << text;
        m_files.push_back(path);
        return path;
    }
    std::string Inventory(const std::string& name, const std::string& systemID, const std::string& bios) {
        return Write(name,
                     "<SVMInventory><System systemID=\"" + systemID +
                         "\"/><Device display=\"BIOS\" FQDD=\"BIOS.System.1\"><Application display=\"BIOS\" "
                         "version=\"" +
                         bios + "\" componentType=\"BIOS\"/></Device></SVMInventory>");
    }
    std::string Read(const std::string& path) {
        std::stringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    Console console;
    std::ostringstream out, err;
    std::string m_dir;
    std::vector<std::string> m_files;
};

TEST_F(CommandsTest, CheckExitStatusFollowsTheVerdicts) {
    CheckOptions options;
    options.baseline = Write("b.json", R"({"schemaVersion": 1, "rules": [{"match": {"fqdd": "BIOS.System.1"},
        "min": "2.17.1"}]})");
    const struct {
        std::vector<std::string> bios;
        int status;
    } rows[] = {{{"2.17.1"}, kExitClean}, {{"2.17.1", "2.9.0"}, kExitFindings}, {{"N/A"}, kExitFindings}};
    for (const auto& row : rows) {
        options.inventories.clear();
        for (size_t i = 0; i < row.bios.size(); ++i)
            options.inventories.push_back(
                Inventory("inv" + std::to_string(i) + ".xml", "H" + std::to_string(i), row.bios[i]));
        out.str("");
        EXPECT_EQ(row.status, RunCheck(options, console)) << row.bios.back();
        EXPECT_NE(std::string::npos, out.str().find("\033[")) << "a terminal gets colour";
    }
    EXPECT_EQ("", err.str());
}

// The error document belongs to the run: with --errors every inventory given
// carries its failures, and the report says so.
TEST_F(CommandsTest, ErrorDocumentReachesEveryInventoryAndTheReportFile) {
    CheckOptions options;
    options.baseline = Write("b.json", R"({"schemaVersion": 1, "rules": [{"match": {"name": "PERC*"},
        "required": true, "module": "/storageinv"}]})");
    options.errors = Write("err.xml",
                           "<InventoryError lang=\"en\"><SPStatus module=\"/storageinv\" result=\"false\">"
                           "<Message>x</Message></SPStatus></InventoryError>");
    options.inventories = {Inventory("a.xml", "A", "1"), Inventory("b.xml", "B", "1")};
    options.format = "json";
    options.output = m_dir + "/report.json";
    m_files.push_back(options.output);
    EXPECT_EQ(kExitFindings, RunCheck(options, console));
    EXPECT_EQ("", out.str());
    const std::string report = Read(options.output);
    size_t unknown = 0;
    for (size_t at = report.find("\"verdict\": \"unknown\""); at != std::string::npos;
         at = report.find("\"verdict\": \"unknown\"", at + 1))
        ++unknown;
    EXPECT_EQ(2u, unknown) << report;
    EXPECT_NE(std::string::npos, report.find("\"failedModules\": [\"/storageinv\"]"));
}

TEST_F(CommandsTest, DiffExitStatusLikeDiff) {
    DiffOptions options;
    options.before = Inventory("old.xml", "A", "2.9.0");
    options.after = Inventory("same.xml", "A", "2.9.0");
    EXPECT_EQ(kExitClean, RunDiff(options, console));
    EXPECT_EQ("no change\n", out.str());
    options.after = Inventory("new.xml", "A", "2.17.1");
    options.output = m_dir + "/diff.txt";
    m_files.push_back(options.output);
    EXPECT_EQ(kExitFindings, RunDiff(options, console));
    EXPECT_EQ(
        "CHANGE   KEY                           FROM   TO\n"
        "changed  BIOS/fqdd=BIOS.System.1/BIOS  2.9.0  2.17.1\n"
        "1 changed\n",
        Read(options.output));  // no colour in a file
    options.before = options.after = "-";
    EXPECT_EQ(kExitTrouble, RunDiff(options, console));
    EXPECT_EQ("sorvik-audit: standard input (-) can be read once only\n", err.str());
}

}  // namespace
}  // namespace audit
