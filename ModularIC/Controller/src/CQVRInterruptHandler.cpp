#include "CQVRInterruptHandler.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <mutex>

#include "CQVRChildRegistry.h"
#include "QVRTemporaryFiles.h"

namespace {

// How long a module start under way may take to reach the registry.
const int kStartWaitMs = 200;

// Never destroyed: the waiting thread may use them while the process exits.
std::mutex& CleanupMutex() {
    static std::mutex* mutex = new std::mutex();
    return *mutex;
}

std::function<void()>& Cleanup() {
    static std::function<void()>* cleanup = new std::function<void()>();
    return *cleanup;
}

sigset_t TerminationSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    return signals;
}

void* WaitForTermination(void*) {
    const sigset_t signals = TerminationSignals();
    int sig = 0;
    while (sigwait(&signals, &sig) != 0) {
    }
    CQVRChildRegistry::Instance().EndAll(kStartWaitMs);
    QVRTemporaryFiles::RemoveAllBeforeExit();
    CleanupMutex().lock();  // held until exit: nothing is released twice
    if (Cleanup()) Cleanup()();
    _exit(CQVRInterruptHandler::ExitStatusFor(sig));
}

}  // namespace

bool CQVRInterruptHandler::Install() {
    const sigset_t signals = TerminationSignals();
    sigset_t previous;
    if (pthread_sigmask(SIG_BLOCK, &signals, &previous) != 0) return false;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    const bool started = pthread_create(&thread, &attributes, WaitForTermination, nullptr) == 0;
    pthread_attr_destroy(&attributes);
    if (!started) {
        pthread_sigmask(SIG_SETMASK, &previous, nullptr);
        return false;
    }
    signal(SIGPIPE, SIG_IGN);
    return true;
}

void CQVRInterruptHandler::SetCleanup(std::function<void()> cleanup) {
    std::lock_guard<std::mutex> lock(CleanupMutex());
    Cleanup() = std::move(cleanup);
}

void CQVRInterruptHandler::RunCleanup() {
    std::lock_guard<std::mutex> lock(CleanupMutex());
    std::function<void()> cleanup;
    cleanup.swap(Cleanup());
    if (cleanup) cleanup();
}
