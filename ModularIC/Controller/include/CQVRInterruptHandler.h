#ifndef CQVRINTERRUPTHANDLER_H
#define CQVRINTERRUPTHANDLER_H

#include <functional>

// Ends an interrupted collection cleanly. SIGINT, SIGTERM and SIGHUP are
// taken by one thread of their own: it kills every running module's process
// group, removes the temporary file of every document not yet complete, runs
// the cleanup the controller registered (the progress segment, the lock) and
// exits with 128 + the signal number. SIGPIPE is ignored, so a closed standard output is
// a write error the output code sees instead of a silent death.
class CQVRInterruptHandler {
public:
    // Call first thing in main, while the process has only one thread: the
    // signals stay blocked in every thread started afterwards. False (and
    // default signal handling) when the waiting thread cannot be started.
    static bool Install();

    // The work to do before exiting on a signal; an empty function clears it.
    // Clearing waits for a cleanup already running, so a caller that clears
    // before releasing what the cleanup releases never releases it twice.
    static void SetCleanup(std::function<void()> cleanup);
    // Runs the registered cleanup on the calling thread and clears it, unless a
    // signal's cleanup came first (the process is then ending): it runs once.
    static void RunCleanup();

    // The exit status of a process ended by signal number sig.
    static int ExitStatusFor(int sig) { return 128 + sig; }
};

#endif
