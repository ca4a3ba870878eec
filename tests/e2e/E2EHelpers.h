#ifndef E2EHELPERS_H
#define E2EHELPERS_H

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

// Helpers for tests that run the built collector as a separate process.
// Failures to set up (a temporary directory, a pipe, a file) throw
// std::runtime_error naming the call and the system's reason.
namespace e2e {

// The path of the collector binary under test.
const std::string& SorvikBinary();

struct RunOptions {
    // Words after argv[0].
    std::vector<std::string> args;
    // Where the child starts; empty keeps the caller's directory.
    std::string workingDirectory;
    // Variables set for the child on top of the inherited environment.
    std::map<std::string, std::string> environment;
    // argv[0]; empty means the program path.
    std::string argv0;
    // The child's whole process group is killed when this runs out.
    std::chrono::milliseconds timeout{std::chrono::seconds(60)};
};

struct ProcessResult {
    bool exited = false;  // ended through exit; exitStatus is valid
    int exitStatus = -1;
    int termSignal = 0;  // the signal that ended it, when not exited
    bool timedOut = false;
    std::string out;  // standard output bytes
    std::string err;  // standard error bytes
};

// Runs the program with /dev/null as standard input, its own process group and
// default signal handling; reads standard output and error apart until both
// close, then reaps it.
ProcessResult RunProgram(const std::string& program, const RunOptions& options);
// The collector against the simulated management controller (its fake module
// tools come first in PATH, so no kernel module is ever loaded); IPMISIM_*
// variables in the environment set what it answers.
ProcessResult RunSorvik(const RunOptions& options);

// A fresh directory under /tmp, removed with everything in it on destruction.
class TempDir {
public:
    TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir();

    const std::string& Path() const { return m_path; }
    // The absolute path of a name relative to the directory.
    std::string PathOf(const std::string& relative) const;
    // Writes the file, creating missing parent directories; mode 0755 for scripts.
    void WriteFile(const std::string& relative, const std::string& contents, mode_t mode = 0644) const;
    void MakeDirectory(const std::string& relative) const;
    bool Exists(const std::string& relative) const;
    std::string ReadFile(const std::string& relative) const;

private:
    std::string m_path;
};

bool PathExists(const std::string& path);

// Holds an exclusive record lock on a file from a separate process, as another
// running instance would, until Release or destruction. The file is left behind.
class ExternalFileLock {
public:
    explicit ExternalFileLock(const std::string& path);
    ExternalFileLock(const ExternalFileLock&) = delete;
    ExternalFileLock& operator=(const ExternalFileLock&) = delete;
    ~ExternalFileLock();

    void Release();

private:
    pid_t m_child;
    int m_releaseFd;
};

}  // namespace e2e

#endif
