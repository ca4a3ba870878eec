#ifndef COLLECTIONSUPPORT_H
#define COLLECTIONSUPPORT_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

// Whole collection runs: a temporary module base directory with a module
// configuration and one shell script per module, and the built collector
// started in it as a separate process. Failures to set up (a temporary
// directory, a pipe, a file) throw std::runtime_error naming the call and the
// system's reason.
namespace collection {

extern const char kLockFile[];
extern const char kAnotherInstance[];
extern const char kFailed[];

// One configured module: directory <base>/<name>, identity "/<name>", started as
// "./run.sh". Empty fields are left out of the configuration.
struct Module {
    Module(std::string n, std::string s, std::string c = "NA")
        : name(std::move(n)), script(std::move(s)), compType(std::move(c)) {}
    std::string name;
    std::string script;  // shell commands after "#!/bin/sh"
    std::string compType;
    std::string guid;
};

struct Config {
    std::vector<Module> preInstall;
    std::vector<Module> postInstall;
    // Generation nodes in file order: the node's "_type" and its modules.
    std::vector<std::pair<std::string, std::vector<Module>>> generations;
};
Config GenericOnly(std::vector<Module> modules);

using Args = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;
using Errors = std::vector<std::pair<std::string, std::string>>;  // (module, message)

struct ProcessResult {
    bool exited = false;  // ended through exit; exitStatus is valid
    int exitStatus = -1;
    bool timedOut = false;
    std::string out;        // standard output bytes
    std::string err;        // standard error bytes
    long peakRssBytes = 0;  // largest resident size of the process or a child it reaped
};

// Runs the program (argv[0] first in argv) in the directory with /dev/null as
// standard input, its own process group and default signal handling; reads
// standard output and error apart until both close, then reaps it. The whole
// group is killed after a minute.
ProcessResult RunProgram(const std::string& program, Args argv, const std::string& directory);

std::string ReadFile(const std::string& path);
bool PathExists(const std::string& path);

// A fresh directory under /tmp, removed with everything in it on destruction.
class TempDir {
public:
    TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir();

    const std::string& Path() const { return m_path; }
    // The absolute path of a name relative to the directory.
    std::string PathOf(const std::string& relative) const { return m_path + "/" + relative; }
    // Writes the file, creating missing parent directories; mode 0755 for scripts.
    void WriteFile(const std::string& relative, const std::string& contents, mode_t mode = 0644) const;
    bool Exists(const std::string& relative) const { return PathExists(PathOf(relative)); }
    std::string ReadFile(const std::string& relative) const { return collection::ReadFile(PathOf(relative)); }

private:
    std::string m_path;
};

// Holds an exclusive lock on the file that conflicts with the collector's
// record lock, as another running instance would, until Release or
// destruction. The file is left behind.
class FileLock {
public:
    explicit FileLock(const std::string& path);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() { Release(); }
    void Release();

private:
    int m_fd;
};

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
void ExpectResult(const ProcessResult& result, int exitStatus, const std::string& out,
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
    // controller (its fake module tools come first in PATH, so no kernel module
    // is ever loaded), with its IPMISIM_* settings and other variables in
    // environment. It is started
    // by "sh -c" with the shell text around it: "$@" is the collector and its
    // options, to be run in a redirection or a pipeline.
    ProcessResult Run(const Args& args, const Environment& environment = {},
                      const std::string& shell = "exec \"$@\"") const;

    // Script piece appending a line to ran.log, and the lines logged so far.
    std::string Note(const std::string& line) const;
    std::vector<std::string> Ran(bool sorted = false) const;
    void ForgetRan() const;

    TempDir dir;
};

}  // namespace collection

#endif
