#ifndef COLLECTIONSUPPORT_H
#define COLLECTIONSUPPORT_H

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "E2EHelpers.h"

// Whole collection runs: a temporary module base directory with a module
// configuration and one shell script per module, and the collector started in it.
namespace collection {

extern const char kLockFile[];
extern const char kAnotherInstance[];

// One configured module: directory <base>/<name>, identity "/<name>", started as
// "./run.sh". Empty fields are left out of the configuration.
struct Module {
    Module(std::string n, std::string s, std::string c = "NA")
        : name(std::move(n)), script(std::move(s)), compType(std::move(c)) {}
    std::string name;
    std::string script;  // shell commands after "#!/bin/sh"
    std::string compType;
    std::string guid;
    std::string priority;
    std::string parallel;  // "_isParallelRunSupported"
    std::string type = "cli";
};

struct Config {
    std::vector<Module> preInstall;
    std::vector<Module> postInstall;
    // Generation nodes in file order: the node's "_type" and its modules.
    std::vector<std::pair<std::string, std::vector<Module>>> generations;
};
Config GenericOnly(std::vector<Module> modules);

using Args = std::vector<std::string>;
using Errors = std::vector<std::pair<std::string, std::string>>;  // (module, message)

std::string Emit(const std::string& text);  // script piece printing the text
// A module document with one non-PCI device, and that device in the inventory.
std::string DeviceDoc(const std::string& id);
std::string DeviceBody(const std::string& id);

// Expected documents, timestamps written as "T"; body lines end in "\n".
std::string InventoryXml(const std::string& body, const std::string& encoding = "UTF-8");
std::string ErrorXml(const Errors& entries, const std::string& encoding = "UTF-8");
std::string ProgressXml(int total, int completed);

// Replaces every timestamp value by "T", failing on one not shaped "YYYY-MM-DD HH:MM:SS".
std::string NormalizeTimestamps(const std::string& document);
// Little-endian UTF-16 behind a byte-order mark, as UTF-8; a missing mark fails.
std::string Utf16LeToUtf8(const std::string& bytes);

// Exit status, standard output with timestamps normalized, and standard error.
void ExpectResult(const e2e::ProcessResult& result, int exitStatus, const std::string& out,
                  const std::string& err = "");

bool ProgressSegmentExists();

// A fresh module base directory; no lock file before, neither lock file nor
// progress segment left after.
class CollectionTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    void Install(const Config& config) const;
    void WriteConfigText(const std::string& text) const { dir.WriteFile("icconfig_new.json", text); }
    // The collector run in the base directory against the simulated management
    // controller, with its IPMISIM_* settings in environment.
    e2e::ProcessResult Run(const Args& args,
                           const std::map<std::string, std::string>& environment = {}) const;

    // Script piece appending a line to ran.log, and the lines logged so far.
    std::string Note(const std::string& line) const;
    std::vector<std::string> Ran(bool sorted = false) const;
    void ForgetRan() const;

    e2e::TempDir dir;
};

}  // namespace collection

#endif
