#include "CQVRChildRegistry.h"

#include <signal.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>

CQVRChildRegistry& CQVRChildRegistry::Instance() {
    static CQVRChildRegistry* instance = new CQVRChildRegistry();
    return *instance;
}

bool CQVRChildRegistry::BeginStart() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ending) return false;
    ++m_startsUnderWay;
    return true;
}

void CQVRChildRegistry::EndStart(pid_t pid) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (pid > 0) {
        m_groups.insert(pid);
        if (m_ending) kill(-pid, SIGKILL);
    }
    --m_startsUnderWay;
    m_startsDone.notify_all();
}

int CQVRChildRegistry::ReapExited(pid_t pid) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_groups.erase(pid);
    for (;;) {
        int status = 0;
        const pid_t rc = waitpid(pid, &status, 0);
        if (rc == pid) return status;
        if (rc < 0 && errno == EINTR) continue;
        return -1;
    }
}

void CQVRChildRegistry::EndAll(int waitMs) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_ending = true;
    for (pid_t group : m_groups) kill(-group, SIGKILL);
    m_startsDone.wait_for(lock, std::chrono::milliseconds(waitMs), [this] { return m_startsUnderWay == 0; });
}

std::size_t CQVRChildRegistry::Count() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_groups.size();
}
