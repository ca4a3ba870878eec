#ifndef CQVREXECCOMMAND_H
#define CQVREXECCOMMAND_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "IPlatformImpl.h"
#include "IQVRChildSpawner.h"
#include "QVRCMutex.h"

// One module run: starts "./" + command + " 2>/dev/null " through the shell in
// the given directory, reads its standard output within a total time budget,
// kills it when it overruns, and reaps it. Used once, from one thread.
class CQVRExecCommand {
public:
    enum State : uint32_t {
        kStateCreated = 0,
        kStateRunning = 1,    // pipe open
        kStateFailed = 2,     // could not start, or killed on time-out
        kStateCompleted = 3,  // end of output reached
    };

    // Taken around the change of directory and the start of every command
    // created with serializeStart: the working directory is process-wide.
    static QVRCMutex mutSharedLockInterprocesses;

    // The most a module may print: a run past it is killed and fails as a
    // time-out does.
    // Room for an inventory of a gigabyte; a run costs at most about five times
    // its module output, so even this much stays within 8 GiB.
    static const std::size_t kMaxOutputBytes = std::size_t(5) << 28;

    // spawner and platform null mean the real ones; given ones are borrowed.
    // The platform changes the directory and runs the kill line.
    CQVRExecCommand(const std::string& directory, const std::string& command, bool serializeStart,
                    unsigned int timeoutSeconds, bool captureOutput, IQVRChildSpawner* spawner = nullptr,
                    std::size_t outputLimit = kMaxOutputBytes, IPlatformImpl* platform = nullptr);
    CQVRExecCommand(const CQVRExecCommand&) = delete;
    CQVRExecCommand& operator=(const CQVRExecCommand&) = delete;
    // Kills and reaps a child still running: no child is left unreaped. Never throws.
    ~CQVRExecCommand();

    // Changes to the directory (when non-empty) and starts the child. True if it
    // started; false for a second call, a directory that cannot be entered, or a
    // failed start (state 2).
    bool Execute();
    // Reads the child to end of file or until timeoutSeconds have passed since
    // the call, kills it on time-out or when it prints more than the output
    // limit (its output is then discarded), closes the pipe and reaps the
    // child. False only when no child is open.
    bool ReadConsoleBuffer();
    // State 2 or 3 and the pipe closed.
    bool IsProcessCompleted() const;
    // Reads first unless already finished; see ReadConsoleBuffer.
    bool EndProcess();
    // Like EndProcess, then the captured output (empty without capture).
    std::string& GetConsoleBuffer();

    uint32_t GetState() const { return m_state; }
    // The wait status of the shell, -1 until the child is reaped.
    int32_t GetExitStatus() const { return m_exitStatus; }

    static std::string BuildShellCommand(const std::string& command);
    // The line that force-kills this program's children whose process line
    // contains the command text.
    static std::string BuildKillCommand(long ownPid, const std::string& command);

private:
    void GrowConsoleBuffer(std::size_t more);
    void KillChild(const char* reason);
    int ReapAfterEndOfOutput(long long deadline);

    QVRChildHandle m_pipe;
    std::string m_directory;
    std::string m_command;
    bool m_serializeStart;
    uint32_t m_timeoutSeconds;
    std::string m_consoleBuffer;
    bool m_captureOutput;
    int32_t m_exitStatus;
    uint32_t m_state;
    IQVRChildSpawner* m_pSpawner;
    IPlatformImpl* m_pPlatform;
    std::size_t m_outputLimit;
};

#endif
