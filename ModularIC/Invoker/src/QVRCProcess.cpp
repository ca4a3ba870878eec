#include "QVRCProcess.h"

#include "CQVRExecCommand.h"

QVRCProcess::QVRCProcess(const std::string& directory, const std::string& command,
                         unsigned int timeoutSeconds, bool captureOutput, bool serializeStart)
    : m_directory(directory),
      m_command(command),
      m_timeoutSeconds(timeoutSeconds),
      m_captureOutput(captureOutput),
      m_serializeStart(serializeStart) {}

bool QVRCProcess::Execute() {
    if (m_command.empty()) return false;
    CQVRExecCommand exec(m_directory, m_command, m_serializeStart, m_timeoutSeconds, m_captureOutput);
    const bool started = exec.Execute();
    if (started) {
        exec.EndProcess();
        if (m_captureOutput) m_output.swap(exec.GetConsoleBuffer());
    }
    return started;
}
