#ifndef BQMIPMISESSIONHANDLER_H
#define BQMIPMISESSIONHANDLER_H

#include <map>

#include "BQMIPMIData.h"
#include "BQMLock.h"

class BQMIPMISession;

// The process-wide keeper of sessions, one per session identifier (the calling
// process), and of the application default configuration. Thread-safe: the
// map and the default are guarded by the handler's lock.
class BQMIPMISessionHandler {
public:
    // Created on first use.
    static BQMIPMISessionHandler* GetInstance();
    // Destroys the handler and every session it holds.
    static void DestroyInstance();
    static BQMLock& GetLockObject();

    // The caller's session identifier: the process id.
    unsigned long long GetSessionID();
    // The caller's session, created on first use; owned by the handler. Null
    // only when memory is short.
    BQMIPMISession* GetSession();
    // Releases and destroys the caller's session. 0, or 257 when it had none.
    int ReleaseSession();
    // Destroys every session.
    void Cleanup();

    void SetApplicationDefaultConfiguration(const _BQMIPMIConfiguration& configuration);
    // 60, 5, 5, 50 until set.
    _BQMIPMIConfiguration GetApplicationDefaultConfiguration();

private:
    BQMIPMISessionHandler();
    ~BQMIPMISessionHandler();
    BQMIPMISessionHandler(const BQMIPMISessionHandler&) = delete;
    BQMIPMISessionHandler& operator=(const BQMIPMISessionHandler&) = delete;

    static BQMIPMISessionHandler* sInstance;

    std::map<unsigned long long, BQMIPMISession*> mSessions;
    _BQMIPMIConfiguration mDefaultConfiguration;
};

#endif
