#include "CQVRExecCommand.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>
#include <new>

#include "CLogger.h"
#include "CPlatformLayer.h"
#include "CQVRPosixChildSpawner.h"

QVRCMutex CQVRExecCommand::mutSharedLockInterprocesses;

namespace {
const std::size_t kReadChunk = 64 * 1024;
}  // namespace

CQVRExecCommand::CQVRExecCommand(const std::string& directory, const std::string& command,
                                 bool serializeStart, unsigned int timeoutSeconds, bool captureOutput,
                                 IQVRChildSpawner* spawner, std::size_t outputLimit, IPlatformImpl* platform)
    : m_directory(directory),
      m_command(command),
      m_serializeStart(serializeStart),
      m_timeoutSeconds(timeoutSeconds),
      m_captureOutput(captureOutput),
      m_exitStatus(-1),
      m_state(kStateCreated),
      m_pSpawner(spawner != nullptr ? spawner : &CQVRPosixChildSpawner::Instance()),
      m_pPlatform(platform != nullptr ? platform : &CPlatformLayer::Real()),
      m_outputLimit(outputLimit) {}

CQVRExecCommand::~CQVRExecCommand() {
    // Only an exception between Execute and EndProcess leaves a child here;
    // its output has no taker any more, so it is ended, not read.
    if (m_pipe.fd < 0) return;
    m_pSpawner->KillProcessGroup(m_pipe.pid);
    m_pSpawner->CloseReadEnd(m_pipe.fd);
    m_pSpawner->Reap(m_pipe.pid);
}

std::string CQVRExecCommand::BuildShellCommand(const std::string& command) {
    return "./" + command + " 2>/dev/null ";
}

std::string CQVRExecCommand::BuildKillCommand(long ownPid, const std::string& command) {
    return "kill -9 `ps --ppid " + std::to_string(ownPid) + " | grep " + command + " | awk '{print $1}'`";
}

bool CQVRExecCommand::Execute() {
    if (m_state != kStateCreated) return false;
    const std::string shellCommand = BuildShellCommand(m_command);
    std::string error;
    bool started = false;
    {
        std::unique_ptr<QVRCMutexLock> startLock;
        if (m_serializeStart) startLock.reset(new QVRCMutexLock(mutSharedLockInterprocesses));
        if (!m_directory.empty() && !m_pPlatform->SetCurrentDirectory(m_directory)) {
            // Starting anyway would run whatever "./command" names in the wrong directory.
            error = "cannot enter directory " + m_directory;
        } else {
            started = m_pSpawner->Start(shellCommand, m_pipe, error);
        }
    }

    m_state = started ? kStateRunning : kStateFailed;
    if (!started) {
        CLogger::GetInstance()->log(
            __FILE__, __LINE__,
            "CQVRExecCommand::Execute : \t\t\t\tUnable to start " + m_command + ": " + error);
    }
    return started;
}

bool CQVRExecCommand::ReadConsoleBuffer() {
    if (m_pipe.fd < 0) return false;
    m_pSpawner->SetNonBlocking(m_pipe.fd);
    const long long deadline =
        m_pSpawner->NowMilliseconds() + static_cast<long long>(m_timeoutSeconds) * 1000LL;

    char buffer[kReadChunk];
    bool endOfOutput = false;
    bool overflow = false;
    int failedWaits = 0;
    while (!endOfOutput && !overflow) {
        const long long left = deadline - m_pSpawner->NowMilliseconds();
        const int waitMs = left <= 0 ? 0 : (left > INT_MAX ? INT_MAX : static_cast<int>(left));
        const int ready = m_pSpawner->WaitReadable(m_pipe.fd, waitMs);
        if (ready == 0) break;
        if (ready != 1) {
            if (left <= 0) break;  // a wait that keeps failing must not outlive the budget
            // Nor spin: back off, up to a tenth of a second between tries.
            if (++failedWaits > 1) m_pSpawner->Pause(failedWaits < 100 ? failedWaits : 100);
            continue;
        }
        failedWaits = 0;
        for (;;) {
            const long got = m_pSpawner->Read(m_pipe.fd, buffer, sizeof(buffer));
            if (got > 0) {
                if (!m_captureOutput) continue;
                const std::size_t size = static_cast<std::size_t>(got);
                // A module that floods its output is ended like one that overruns its
                // time: what it printed cannot be the inventory it was meant to be.
                if (m_consoleBuffer.size() + size > m_outputLimit) {
                    overflow = true;
                    break;
                }
                try {
                    if (m_consoleBuffer.size() + size > m_consoleBuffer.capacity()) GrowConsoleBuffer(size);
                    m_consoleBuffer.append(buffer, size);
                } catch (const std::bad_alloc&) {
                    overflow = true;
                    break;
                }
                continue;
            }
            if (got < 0 && errno == EINTR) continue;
            if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) break;
            endOfOutput = true;  // end of file, or a pipe that can no longer be read
            break;
        }
    }

    int status = -1;
    if (endOfOutput) {
        m_state = kStateCompleted;
        m_pSpawner->CloseReadEnd(m_pipe.fd);
        status = ReapAfterEndOfOutput(deadline);
    } else {
        KillChild(overflow ? "Killed for printing more than the output limit: " : "Killed on time-out: ");
        m_state = kStateFailed;
        std::string().swap(m_consoleBuffer);
        m_pSpawner->CloseReadEnd(m_pipe.fd);
        status = m_pSpawner->Reap(m_pipe.pid);
    }
    m_exitStatus = status;
    m_pipe = QVRChildHandle();
    return true;
}

void CQVRExecCommand::GrowConsoleBuffer(std::size_t more) {
    // Each growth copies what was read so far, old and new copies resident at
    // once. Past half the limit the buffer goes straight to the limit, so the
    // largest output, flood or not, costs about the limit and never twice it.
    std::size_t wanted = std::max(m_consoleBuffer.size() + more, 2 * m_consoleBuffer.capacity());
    if (wanted > m_outputLimit / 2) wanted = std::max(m_outputLimit, m_consoleBuffer.size() + more);
    m_consoleBuffer.reserve(wanted);
}

void CQVRExecCommand::KillChild(const char* reason) {
    // ps never shows the shell's command line, so the line's kill usually has no
    // process id to take: its complaints stay off our standard error.
    m_pPlatform->RunShellCommand(BuildKillCommand(static_cast<long>(getpid()), m_command), true);
    // The line above matches only what ps names, and the direct child is the
    // shell; the group holds the module and everything it started.
    m_pSpawner->KillProcessGroup(m_pipe.pid);
    CLogger::GetInstance()->log(
        __FILE__, __LINE__,
        "CQVRExecCommand::ReadConsoleBuffer : \t\t\t\t" + std::string(reason) + m_command);
}

int CQVRExecCommand::ReapAfterEndOfOutput(long long deadline) {
    // A module may close its output and go on running: it still gets only the
    // time left of its budget.
    const long long left = deadline - m_pSpawner->NowMilliseconds();
    const int waitMs = left <= 0 ? 0 : (left > INT_MAX ? INT_MAX : static_cast<int>(left));
    int status = -1;
    if (m_pSpawner->WaitExit(m_pipe.pid, waitMs, status)) return status;
    m_pSpawner->KillProcessGroup(m_pipe.pid);
    return m_pSpawner->Reap(m_pipe.pid);
}

bool CQVRExecCommand::IsProcessCompleted() const {
    return (m_state == kStateFailed || m_state == kStateCompleted) && m_pipe.fd < 0;
}

bool CQVRExecCommand::EndProcess() {
    if (IsProcessCompleted()) return true;
    return ReadConsoleBuffer();
}

std::string& CQVRExecCommand::GetConsoleBuffer() {
    EndProcess();
    return m_consoleBuffer;
}
