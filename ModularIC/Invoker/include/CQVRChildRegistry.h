#ifndef CQVRCHILDREGISTRY_H
#define CQVRCHILDREGISTRY_H

#include <sys/types.h>

#include <condition_variable>
#include <mutex>
#include <unordered_set>

// The process groups of the modules running now, so that an interrupted
// collection can end them all before it exits. Thread-safe.
class CQVRChildRegistry {
public:
    // The process-wide registry. Never destroyed: the interrupt thread may still
    // use it while the process exits.
    static CQVRChildRegistry& Instance();

    // Before a fork: false once the collection is being ended (start nothing).
    bool BeginStart();
    // After the fork BeginStart allowed: records the new group (pid <= 0: the
    // fork failed). A group started after EndAll began is killed at once.
    void EndStart(pid_t pid);
    // Reaps pid, which has exited, taking it out of the registry in the same
    // step: its group id cannot be reused while EndAll might still signal it.
    // The wait status, or -1.
    int ReapExited(pid_t pid);

    // Kills every registered group and every one whose start is under way;
    // waits at most waitMs for those starts. Later starts are refused.
    void EndAll(int waitMs);

    // Test support: the number of groups registered.
    std::size_t Count();

private:
    CQVRChildRegistry() = default;

    std::mutex m_mutex;
    std::condition_variable m_startsDone;
    std::unordered_set<pid_t> m_groups;
    int m_startsUnderWay = 0;
    bool m_ending = false;
};

#endif
