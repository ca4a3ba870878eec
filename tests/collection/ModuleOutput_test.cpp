#include "CollectionSupport.h"

namespace collection {
namespace {

std::string Doc(const std::string& children) { return "<SVMInventory>" + children + "</SVMInventory>"; }
std::string Dev(const std::string& id, const std::string& display, const std::string& apps,
                const std::string& extra = "") {
    return "<Device componentID=\"" + id + "\" display=\"" + display + "\"" + extra + ">" + apps +
           "</Device>";
}
std::string App(const std::string& type, const std::string& version, const std::string& display) {
    return "<Application componentType=\"" + type + "\" version=\"" + version + "\" display=\"" + display +
           "\"/>";
}
std::string Status(const std::string& result, const std::string& messages) {
    return "<SPStatus result=\"" + result + "\">" + messages + "</SPStatus>";
}
// The device as the inventory document writes it.
std::string Out(const std::string& display, const std::string& id, const std::string& appDisplay,
                const std::string& version, const std::string& type, const std::string& extra = "") {
    return "  <Device display=\"" + display + "\" componentID=\"" + id + "\"" + extra +
           ">\n    <Application display=\"" + appDisplay + "\" version=\"" + version + "\" componentType=\"" +
           type + "\"/>\n  </Device>\n";
}

class ModuleOutputTest : public CollectionTest {};

// How one document becomes records is the data model's element table; these
// rows are what spans modules and the command line: failure messages in the
// error document, duplicates across modules, the type filter and the exit status.
TEST_F(ModuleOutputTest, EachModuleOutputBecomesRecordsFailuresOrNothing) {
    const struct {
        const char* name;
        Args outputs;  // one module each, run one at a time in this order
        Args args;
        std::string body;  // children of the inventory root
        Errors errors;
    } rows[] = {
        // clang-format off
        {"module-reported errors",
         {Doc(Status("false", "<Message>first</Message><Message>gone</Message>")), Doc(Status("false", "")),
          Doc(Status("true", "<Message>fine</Message>")), "", ""},
         {}, "", {{"/m1", "gone"}, {"/m2", "Empty inventory results."}, {"/m4", kFailed}, {"/m5", kFailed}}},
        {"the earlier of equal devices survives",
         {Doc(Dev("30", "first", App("FRMW", "1.0", "one"))),
          Doc(Dev("30", "second", App("FRMW", "1.0", "two")) + Dev("30", "third", App("FRMW", "2.0", "thr")) +
              Dev("30", "fourth", App("FRMW", "1.0", "four"), " FQDD=\"X.1\"") +
              Dev("30", "fifth", App("FRMW", "2.0", "five")))},
         {}, Out("first", "30", "one", "1.0", "FRMW") + Out("third", "30", "thr", "2.0", "FRMW") +
             Out("fourth", "30", "four", "1.0", "FRMW", " FQDD=\"X.1\""), {}},
        {"comptype filters devices by their accepted application",
         {Doc(Dev("40", "Kept", App("FRMW", "1", "A")) + Dev("41", "Driver", App("DRVR", "1", "B")) +
              Dev("42", "LastIsDriver", App("FRMW", "1", "C") + App("DRVR", "2", "D")) +
              Status("false", "<Message>partial</Message>"))},
         {"-comptype=FRMW"}, Out("Kept", "40", "A", "1", "FRMW"), {{"/m1", "partial"}}},
        {"operating system and system only",
         {Doc("<OperatingSystem osVendor=\"V\" osArch=\"A\" majorVersion=\"7\" minorVersion=\"\" "
              "spMajorVersion=\"\" name=\"N\" osCode=\"C\"/><System systemID=\"0627\"/>"),
          Doc("<System systemID=\"\"/>")}, {},
         "  <OperatingSystem osVendor=\"V\" osCode=\"C\" osArch=\"A\" majorVersion=\"7\" "
         "minorVersion=\"\"/>\n  <System systemID=\"0627\"/>\n", {}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<Module> modules;
        for (const std::string& output : row.outputs)
            modules.push_back(
                Module{"m" + std::to_string(modules.size() + 1), output.empty() ? "" : Emit(output)});
        Install(GenericOnly(modules));
        Args args = row.args;
        args.push_back("-serialize=yes");
        // Exit status 1 only when devices were collected.
        ExpectResult(Run(args), row.body.find("<Device") == std::string::npos ? 0 : 1,
                     InventoryXml(row.body) + (row.errors.empty() ? "" : ErrorXml(row.errors)));
    }
}

}  // namespace
}  // namespace collection
