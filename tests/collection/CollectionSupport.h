#ifndef COLLECTIONSUPPORT_H
#define COLLECTIONSUPPORT_H

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "E2EHelpers.h"

// Whole collection runs: a temporary module base directory with a module
// configuration and one shell script per module, and the collector started in it.
namespace collection {

extern const char kLockFile[];
extern const char kAnotherInstance[];
extern const char kNoInstance[];

// One configured module. Its directory is <base>/<name>, its identity "/<name>",
// and it is started as "./run.sh" from there. Empty fields are left out of the
// configuration.
struct Module {
    Module() = default;
    Module(std::string moduleName, std::string moduleScript)
        : name(std::move(moduleName)), script(std::move(moduleScript)) {}

    std::string name;
    std::string script;  // shell commands after "#!/bin/sh"
    std::string guid;
    std::string compType = "NA";
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

// Script pieces.
std::string Emit(const std::string& text);                             // prints the text
std::string Append(const std::string& path, const std::string& line);  // appends a line to a file

// The inventory document as written in UTF-8 with the timestamp replaced by "T";
// body holds the root's children, each line ending in "\n".
std::string InventoryXml(const std::string& body, const std::string& encoding = "UTF-8");
// The error document with one entry per (module, message).
std::string ErrorXml(const std::vector<std::pair<std::string, std::string>>& entries,
                     const std::string& encoding = "UTF-8");
std::string ProgressXml(int total, int completed, const std::string& encoding = "UTF-8");

// Replaces every timestamp attribute value by "T"; a value not of the form
// "YYYY-MM-DD HH:MM:SS" is a test failure.
std::string NormalizeTimestamps(const std::string& document);
// Decodes little-endian UTF-16 behind a byte-order mark into UTF-8; a missing
// mark is a test failure and gives "".
std::string Utf16LeToUtf8(const std::string& bytes);

bool ProgressSegmentExists();
void RemoveProgressSegment();

// Fixture of every collection suite: a fresh module base directory, no lock file
// before, neither lock file nor progress segment left after.
class CollectionTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    void Install(const Config& config) const;
    void WriteConfigText(const std::string& text) const;

    // The collector started in the base directory.
    e2e::ProcessResult Run(std::vector<std::string> args,
                           const std::map<std::string, std::string>& environment = {}) const;
    // The same with the simulated management controller.
    e2e::ProcessResult RunWithSimulator(std::vector<std::string> args,
                                        const std::map<std::string, std::string>& environment = {}) const;

    // Lines of a marker file written by modules; empty when it does not exist.
    std::vector<std::string> Lines(const std::string& relative) const;

    e2e::TempDir dir;
};

}  // namespace collection

#endif
