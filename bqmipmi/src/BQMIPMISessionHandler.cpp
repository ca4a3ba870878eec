#include "BQMIPMISessionHandler.h"

#include <unistd.h>

#include <new>

#include "BQMIPMISession.h"
#include "BQMLogger.h"

BQMIPMISessionHandler* BQMIPMISessionHandler::sInstance = nullptr;

BQMLock& BQMIPMISessionHandler::GetLockObject() {
    static BQMLock lock;
    return lock;
}

BQMIPMISessionHandler* BQMIPMISessionHandler::GetInstance() {
    BQMLockGuard guard(GetLockObject());
    if (sInstance == nullptr) sInstance = new (std::nothrow) BQMIPMISessionHandler();
    return sInstance;
}

void BQMIPMISessionHandler::DestroyInstance() {
    BQMIPMISessionHandler* instance;
    {
        BQMLockGuard guard(GetLockObject());
        instance = sInstance;
        sInstance = nullptr;
    }
    delete instance;
}

BQMIPMISessionHandler::BQMIPMISessionHandler() : mDefaultConfiguration(kBQMIPMIDefaultConfiguration) {}

BQMIPMISessionHandler::~BQMIPMISessionHandler() { Cleanup(); }

unsigned long long BQMIPMISessionHandler::GetSessionID() { return static_cast<unsigned long long>(getpid()); }

BQMIPMISession* BQMIPMISessionHandler::GetSession() {
    const unsigned long long id = GetSessionID();
    BQMLockGuard guard(GetLockObject());
    std::map<unsigned long long, BQMIPMISession*>::iterator found = mSessions.find(id);
    if (found != mSessions.end()) return found->second;
    BQM_LOG(BQM_LOG_INFO, "Creating session object for session ID = %lu", static_cast<unsigned long>(id));
    BQMIPMISession* session = new (std::nothrow) BQMIPMISession();
    if (session != nullptr) mSessions[id] = session;
    return session;
}

int BQMIPMISessionHandler::ReleaseSession() {
    const unsigned long long id = GetSessionID();
    BQMIPMISession* session = nullptr;
    {
        BQMLockGuard guard(GetLockObject());
        std::map<unsigned long long, BQMIPMISession*>::iterator found = mSessions.find(id);
        if (found == mSessions.end()) return BQMIPMI_STATUS_INVALID;
        session = found->second;
        mSessions.erase(found);
    }
    session->Release();
    delete session;
    return 0;
}

void BQMIPMISessionHandler::Cleanup() {
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMISessionHandler::Cleanup() Entering");
    std::map<unsigned long long, BQMIPMISession*> sessions;
    {
        BQMLockGuard guard(GetLockObject());
        sessions.swap(mSessions);
    }
    for (auto& entry : sessions) delete entry.second;
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMISessionHandler::Cleanup() Leaving");
}

void BQMIPMISessionHandler::SetApplicationDefaultConfiguration(const _BQMIPMIConfiguration& configuration) {
    BQMLockGuard guard(GetLockObject());
    mDefaultConfiguration = configuration;
}

_BQMIPMIConfiguration BQMIPMISessionHandler::GetApplicationDefaultConfiguration() {
    BQMLockGuard guard(GetLockObject());
    return mDefaultConfiguration;
}
