#include "CollectionSupport.h"

namespace collection {
namespace {

// The output of a module that prints nothing.
const char kNothing[] = "";

std::string Doc(const std::string& children) { return "<SVMInventory>" + children + "</SVMInventory>"; }

std::string NonPci(const std::string& id, const std::string& display, const std::string& applications,
                   const std::string& extra = "") {
    return "<Device componentID=\"" + id + "\" display=\"" + display + "\"" + extra + ">" + applications +
           "</Device>";
}

std::string App(const std::string& type, const std::string& version, const std::string& display) {
    return "<Application componentType=\"" + type + "\" version=\"" + version + "\" display=\"" + display +
           "\"/>";
}

// Expected device element of the inventory document.
std::string OutNonPci(const std::string& display, const std::string& id, const std::string& appDisplay,
                      const std::string& version, const std::string& type, const std::string& extra = "") {
    return "  <Device display=\"" + display + "\" componentID=\"" + id + "\"" + extra + ">\n" +
           "    <Application display=\"" + appDisplay + "\" version=\"" + version + "\" componentType=\"" +
           type + "\"/>\n  </Device>\n";
}

struct Row {
    const char* name;
    std::vector<std::string> outputs;  // one module each, run in this order
    std::vector<std::string> args;
    std::string body;  // children of the inventory root
    std::vector<std::pair<std::string, std::string>> errors;
    int exitStatus;
};

class ModuleOutputSerial : public CollectionTest {};

TEST_F(ModuleOutputSerial, EachModuleOutputBecomesRecordsFailuresOrNothing) {
    const Row rows[] = {
        {"empty output is a failure",
         {kNothing},
         {},
         "",
         {{"/m1", "Configured program execution failure"}},
         0},
        {"a truncated document is a failure",
         {"<SVMInventory><Device componentID=\"1\""},
         {},
         "",
         {{"/m1", "Invalid inventory XML root element."}},
         0},
        {"plain text without the root tag gives nothing at all", {"no inventory here"}, {}, "", {}, 0},
        {"another root element gives nothing",
         {"<Wrapper>" + Doc(NonPci("5", "D", App("FRMW", "1", "A"))) + "</Wrapper>"},
         {},
         "",
         {},
         0},
        {"module-reported errors",
         {Doc("<SPStatus result=\"false\"><Message>first</Message><Message>disk gone</Message></SPStatus>"),
          Doc("<SPStatus result=\"false\"/>"),
          Doc("<SPStatus result=\"true\"><Message>fine</Message></SPStatus>"), kNothing, kNothing},
         {"-serialize=yes"},
         "",
         {{"/m1", "disk gone"},
          {"/m2", "Empty inventory results."},
          {"/m4", "Configured program execution failure"},
          {"/m5", "Configured program execution failure"}},
         0},
        {"a BIOS application counts only on component 159",
         {Doc(NonPci("158", "NotBios", App("BIOS", "2.1", "BIOS 2.1")) +
              NonPci("159", "SystemBIOS", App("BIOS", "2.1", "BIOS 2.1")))},
         {},
         OutNonPci("SystemBIOS", "159", "BIOS 2.1", "2.1", "BIOS"),
         {},
         1},
        {"the last accepted application wins",
         {Doc(NonPci("20", "Twenty", App("FRMW", "1.0", "A") + App("DRVR", "2.0", "B")) +
              NonPci("21", "TwentyOne", App("FRMW", "1.0", "C") + App("BIOS", "9.9", "D")) +
              NonPci("22", "NoApplication", ""))},
         {},
         OutNonPci("Twenty", "20", "B", "2.0", "DRVR") + OutNonPci("TwentyOne", "21", "C", "1.0", "FRMW"),
         {},
         1},
        {"the earlier of two equal devices survives",
         {Doc(NonPci("30", "first", App("FRMW", "1.0", "one"))),
          Doc(NonPci("30", "second", App("FRMW", "1.0", "two")) +
              NonPci("30", "third", App("FRMW", "2.0", "three")) +
              NonPci("30", "fourth", App("FRMW", "1.0", "four"), " FQDD=\"X.1\"") +
              NonPci("30", "fifth", App("FRMW", "2.0", "five")))},
         {"-serialize=yes"},
         OutNonPci("first", "30", "one", "1.0", "FRMW") + OutNonPci("third", "30", "three", "2.0", "FRMW") +
             OutNonPci("fourth", "30", "four", "1.0", "FRMW", " FQDD=\"X.1\""),
         {},
         1},
        {"comptype filters devices by their accepted application",
         {Doc(NonPci("40", "Kept", App("FRMW", "1", "A")) + NonPci("41", "Driver", App("DRVR", "1", "B")) +
              NonPci("42", "LastIsDriver", App("FRMW", "1", "C") + App("DRVR", "2", "D")) +
              "<SPStatus result=\"false\"><Message>partial</Message></SPStatus>")},
         {"-comptype=FRMW"},
         OutNonPci("Kept", "40", "A", "1", "FRMW"),
         {{"/m1", "partial"}},
         1},
        {"operating system and system",
         {Doc("<OperatingSystem osVendor=\"V\" osArch=\"A\" majorVersion=\"7\" minorVersion=\"2\" "
              "spMajorVersion=\"\" "
              "spMinorVersion=\"1\" name=\"N\" buildNumber=\"9\" osCode=\"C\"/><System systemID=\"0627\"/>"),
          Doc("<System systemID=\"\"/>")},
         {"-serialize=yes"},
         "  <OperatingSystem osVendor=\"V\" osCode=\"C\" osArch=\"A\" majorVersion=\"7\" minorVersion=\"2\" "
         "spMinorVersion=\"1\" buildNumber=\"9\"/>\n  <System systemID=\"0627\"/>\n",
         {},
         0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Config config;
        std::vector<Module> modules;
        for (size_t i = 0; i < row.outputs.size(); ++i) {
            Module module;
            module.name = "m" + std::to_string(i + 1);
            module.script = row.outputs[i].empty() ? "exit 0\n" : Emit(row.outputs[i]);
            modules.push_back(module);
        }
        config.generations = {{"Generic", modules}};
        Install(config);

        const e2e::ProcessResult result = Run(row.args);
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, row.exitStatus) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(NormalizeTimestamps(result.out),
                  InventoryXml(row.body) + (row.errors.empty() ? "" : ErrorXml(row.errors)));
    }
}

}  // namespace
}  // namespace collection
