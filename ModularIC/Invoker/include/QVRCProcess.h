#ifndef QVRCPROCESS_H
#define QVRCPROCESS_H

#include <cstdint>
#include <string>
#include <utility>

// Time limit of one module run in the shipped collector.
const unsigned int QVR_MODULE_TIMEOUT_SECONDS = 300;

// Runs one module command line from a directory with a time limit, optionally
// keeping its standard output.
class QVRCProcess {
public:
    // directory empty: the current directory. serializeStart: take the
    // process-wide start lock around the change of directory and the start
    // (every run on a pool thread).
    QVRCProcess(const std::string& directory, const std::string& command, unsigned int timeoutSeconds,
                bool captureOutput, bool serializeStart);

    // Runs the command to its end or its time limit. False (nothing started) for
    // an empty command or a child that could not be started.
    bool Execute();

    // The captured output: empty without capture, after a failed start or a
    // time-out.
    const std::string& GetOutput() const { return m_output; }
    // Hands the captured output over, leaving none here: a module may print
    // hundreds of megabytes.
    std::string TakeOutput() { return std::move(m_output); }

private:
    std::string m_directory;
    std::string m_command;
    std::string m_unused;
    uint32_t m_timeoutSeconds;
    bool m_captureOutput;
    bool m_serializeStart;
    std::string m_output;
};

#endif
