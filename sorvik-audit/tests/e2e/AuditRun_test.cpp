// The built sorvik-audit against inventories the built collector writes from
// script modules, in every form the collector writes them.
#include <algorithm>

#include "CollectionSupport.h"

namespace collection {
namespace {

const std::string kBiosDoc =
    "<SVMInventory><System systemID=\"0A1B\"/>"
    "<Device componentID=\"159\" display=\"BIOS\" FQDD=\"BIOS.System.1\">"
    "<Application componentType=\"BIOS\" version=\"2.9.0\" display=\"BIOS 2.9.0\"/></Device>"
    "<Device vendorID=\"8086\" deviceID=\"1572\" subVendorID=\"1028\" subDeviceID=\"1f9c\" display=\"X710\" "
    "bus=\"3b\" device=\"0\" function=\"0\" enum=\"0000:3b:00.0\">"
    "<Application componentType=\"DRVR\" version=\"2.22.18\" display=\"i40e\"/></Device></SVMInventory>";

std::string DiskDoc(const std::string& firmware) {
    return "<SVMInventory><Device componentID=\"5\" display=\"NVMe\" FQDD=\"Disk.Bay.0\">"
           "<Application componentType=\"FRMW\" version=\"" +
           firmware + "\" display=\"NVMe SSD \xC3\xA9t\xC3\xA9\"/></Device></SVMInventory>";
}

const std::string kBaseline = R"({"schemaVersion": 1, "rules": [
  {"match": {"componentType": "BIOS"}, "min": "2.17.1", "required": true},
  {"match": {"name": "NVMe SSD*"}, "allowed": ["GDC5302Q", "GDC5602Q"], "module": "/disk",
   "required": true},
  {"match": {"name": "i40e", "vendorID": "8086"}, "min": "2.9.8"}]})";

class AuditRunTest : public CollectionTest {
protected:
    ProcessResult Audit(Args args) const {
        args.insert(args.begin(), "sorvik-audit");
        ProcessResult result = RunProgram(SORVIK_AUDIT_BINARY, args, dir.Path());
        EXPECT_TRUE(result.exited) << result.err;
        return result;
    }
    // The collector with the two modules in the order given.
    void Collect(const std::vector<Module>& modules, const Args& args) const {
        Install(GenericOnly(modules));
        const ProcessResult result = Run(args);
        ASSERT_TRUE(result.exited);
    }
    ProcessResult Shell(const std::string& command) const {
        return RunProgram("/bin/sh", {"sh", "-c", command}, dir.Path());
    }
};

const Module kBios{"bios", Emit(kBiosDoc)};
const Module kDisk{"disk", Emit(DiskDoc("GDC5302Q"))};

// Table lines without the header, sorted: the verdicts whatever order the
// modules reported in.
std::vector<std::string> SortedRows(const std::string& table) {
    std::vector<std::string> rows;
    size_t start = table.find('\n') + 1;
    for (size_t end; (end = table.find('\n', start)) != std::string::npos; start = end + 1)
        rows.push_back(table.substr(start, end - start));
    std::sort(rows.begin(), rows.end());
    return rows;
}

// One run written as UTF-16 XML, UTF-8 XML and JSON, and runs whose modules
// reported in the other order: no change between any two, the same verdicts.
TEST_F(AuditRunTest, EveryFormOfOneRunIsTheSameInventory) {
    Collect({kBios, kDisk}, {"-outc=./a16.xml", "-serialize=yes"});
    Collect({kBios, kDisk}, {"-outc=./a8.xml", "-enc=UTF-8"});
    Collect({kBios, kDisk}, {"-outc=./a.json", "-outf=JSON"});
    Collect({kDisk, kBios}, {"-outc=./swapped.xml", "-serialize=yes"});
    ASSERT_EQ("\xFF\xFE", dir.ReadFile("a16.xml").substr(0, 2));
    const std::string inOrder = Utf16LeToUtf8(dir.ReadFile("a16.xml"));
    const std::string swapped = Utf16LeToUtf8(dir.ReadFile("swapped.xml"));
    ASSERT_LT(inOrder.find("BIOS"), inOrder.find("NVMe"));
    ASSERT_LT(swapped.find("NVMe"), swapped.find("BIOS")) << "the modules did not report in the other order";
    dir.WriteFile("b.json", kBaseline);
    const std::vector<std::string> forms = {"a16.xml", "a8.xml", "a.json", "swapped.xml"};
    std::vector<std::string> firstVerdicts;
    for (const std::string& old : forms) {
        for (const std::string& now : forms) {
            const ProcessResult diff = Audit({"diff", old, now});
            EXPECT_EQ(0, diff.exitStatus) << old << " -> " << now << "\n" << diff.out << diff.err;
            EXPECT_EQ("no change\n", diff.out);
        }
        const ProcessResult check = Audit({"check", "--baseline", "b.json", old});
        EXPECT_EQ(1, check.exitStatus) << check.err;
        if (firstVerdicts.empty()) firstVerdicts = SortedRows(check.out);
        EXPECT_EQ(firstVerdicts, SortedRows(check.out)) << old;
    }
    EXPECT_EQ(
        (std::vector<std::string>{
            "3 components: 2 compliant, 1 outdated", "compliant  0A1B  DRVR  i40e          2.22.18   >=2.9.8",
            "compliant  0A1B  FRMW  NVMe SSD \xC3\xA9t\xC3\xA9  GDC5302Q  one of GDC5302Q, GDC5602Q",
            "outdated   0A1B  BIOS  BIOS 2.9.0    2.9.0     >=2.17.1                   below 2.17.1"}),
        firstVerdicts);
}

// A module that failed in the later run: its component is unknown, never
// removed, whether the error document came on standard output behind the
// inventory or as a file.
TEST_F(AuditRunTest, ComponentOfAFailedModuleIsUnknownNotRemoved) {
    Collect({kBios, kDisk}, {"-outc=./old.xml"});
    Install(GenericOnly({kBios, Module{"disk", "exit 3\n"}}));
    const ProcessResult streamed = Run({}, {}, "exec \"$@\" > new-stdout.xml");
    ASSERT_TRUE(streamed.exited);
    ASSERT_NE(std::string::npos, dir.ReadFile("new-stdout.xml").find("<InventoryError"));
    Collect({kBios, Module{"disk", "exit 3\n"}}, {"-outc=./new.xml", "-logc=./err.xml"});

    const std::string unknown =
        "CHANGE   KEY                                FROM      TO\n"
        "unknown  FRMW/fqdd=Disk.Bay.0/NVMe SSD \xC3\xA9t\xC3\xA9  GDC5302Q  not in NEW, and failed modules "
        "may have "
        "held it: /disk\n"
        "1 unknown\n";
    const ProcessResult fromStdout = Audit({"diff", "old.xml", "new-stdout.xml"});
    EXPECT_EQ(1, fromStdout.exitStatus) << fromStdout.err;
    EXPECT_EQ(unknown, fromStdout.out);
    const ProcessResult withErrors = Audit({"diff", "--errors", "err.xml", "old.xml", "new.xml"});
    EXPECT_EQ(unknown, withErrors.out);
    const ProcessResult withoutErrors = Audit({"diff", "old.xml", "new.xml"});
    EXPECT_NE(std::string::npos, withoutErrors.out.find("removed  FRMW/fqdd=Disk.Bay.0/"))
        << withoutErrors.out;

    dir.WriteFile("b.json", kBaseline);
    const ProcessResult check = Audit({"check", "--baseline", "b.json", "--errors", "err.xml", "new.xml"});
    EXPECT_EQ(1, check.exitStatus);
    // The required rule names the failed module and matched nothing.
    EXPECT_NE(std::string::npos,
              check.out.find("unknown    0A1B        NVMe SSD*            one of GDC5302Q, GDC5602Q  no "
                             "component matched, and module /disk failed\n"))
        << check.out;
}

TEST_F(AuditRunTest, CheckExitStatusAndReportsFromStandardInput) {
    Install(GenericOnly({kBios, kDisk}));
    dir.WriteFile("ok.json",
                  R"({"schemaVersion": 1, "rules": [{"match": {"componentType": "BIOS"}, "min": "2.9"},
        {"match": {"name": "i40e"}, "max": "2.22.18"}]})");
    const ProcessResult piped = Run({"-outf=JSON"}, {},
                                    "\"$@\" | " SORVIK_AUDIT_BINARY
                                    " check --baseline ok.json --format prometheus -o m.prom -; echo rc=$?");
    EXPECT_EQ("rc=0\n", piped.out) << piped.err;
    const std::string metrics = dir.ReadFile("m.prom");
    EXPECT_NE(std::string::npos,
              metrics.find("sorvik_component_compliant{system_id=\"0A1B\",component_type=\"BIOS\","
                           "name=\"BIOS 2.9.0\",component_id=\"159\""))
        << metrics;
    EXPECT_EQ(2, std::count(metrics.begin(), metrics.end(), '}'));  // unmatched components have no series
    EXPECT_NE(std::string::npos, metrics.find("\nsorvik_audit_last_run_timestamp_seconds "));
}

// Bad input: a message naming the file and the place, exit status 2, and
// nothing written to standard output or the report file.
TEST_F(AuditRunTest, BadInputNamesFileAndPlaceAndWritesNothing) {
    Collect({kBios, kDisk}, {"-outc=./inv.xml", "-enc=UTF-8"});
    Collect({kBios, kDisk}, {"-outc=./inv.json", "-outf=JSON"});
    const std::string xml = dir.ReadFile("inv.xml");
    dir.WriteFile("cut.xml", xml.substr(0, xml.rfind("</SVMInventory>")));
    const std::string json = dir.ReadFile("inv.json");
    dir.WriteFile("cut.json", json.substr(0, json.size() / 2));
    dir.WriteFile("b.json", kBaseline);
    dir.WriteFile("bad.json",
                  "{\"schemaVersion\": 1, \"rules\": [{\"match\": {\"name\": \"x\"}, \"max\": 2}]}");
    dir.WriteFile("foreign.xml", "<?xml version=\"1.0\"?>\n<html/>\n");
    const struct {
        Args args;
        std::string message;
    } rows[] = {
        {{"check", "--baseline", "b.json", "-o", "r.txt", "inv.xml", "cut.xml"},
         "cut.xml:12:12: truncated: the document ends before </SVMInventory>"},
        {{"check", "--baseline", "b.json", "-o", "r.txt", "cut.json"}, "cut.json:"},
        {{"check", "--baseline", "bad.json", "-o", "r.txt", "inv.xml"},
         "bad.json: $.rules[0].max: expected a string, found a number"},
        {{"diff", "-o", "r.txt", "inv.xml", "foreign.xml"},
         "foreign.xml:2:6: root element html, not SVMInventory"},
        {{"diff", "inv.xml", "missing.xml"}, "missing.xml: cannot open: No such file or directory"},
        {{"check", "--baseline", "b.json", "--format", "yaml", "inv.xml"}, "--format: yaml not in"},
        {{"diff", "inv.xml"}, "NEW is required"},
        {{"check", "--baseline", "b.json", "-", "-"}, "standard input (-) can be read once only"},
    };
    for (const auto& row : rows) {
        const ProcessResult result = Audit(row.args);
        EXPECT_EQ(2, result.exitStatus) << row.message;
        EXPECT_EQ("", result.out) << row.message;
        EXPECT_NE(std::string::npos, result.err.find(row.message)) << result.err;
        EXPECT_FALSE(dir.Exists("r.txt")) << row.message;
    }
}

}  // namespace
}  // namespace collection
