#ifndef BQMIPMIINTERFACEIMPL_H
#define BQMIPMIINTERFACEIMPL_H

#include "BQMIPMIData.h"
#include "BQMLoggingOptions.h"
#include "BQMString.h"
#include "CPlatformLayer.h"
#include "IBQMIPMIDriverManager.h"
#include "IIPMIDeviceIO.h"

// The IPMI library's entry object: initialise, send requests, release. Loads
// the kernel drivers when they are missing (and unloads them on Release), and
// runs requests through the calling process's session. Not thread-safe.
class BQMIPMIInterfaceImpl {
public:
    // driverUnloadPauseMs: the wait before each driver unload on release. The
    // platform (shell commands, pauses) and the device are borrowed.
    explicit BQMIPMIInterfaceImpl(unsigned long driverUnloadPauseMs = kIPMIDriverUnloadPauseMs,
                                  IPlatformImpl& platform = CPlatformLayer::Real(),
                                  IIPMIDeviceIO& device = IIPMIDeviceIO::Real());
    // Unloads the drivers this object loaded if Release did not.
    virtual ~BQMIPMIInterfaceImpl();
    BQMIPMIInterfaceImpl(const BQMIPMIInterfaceImpl&) = delete;
    BQMIPMIInterfaceImpl& operator=(const BQMIPMIInterfaceImpl&) = delete;

    // Turns logging on (marker file), makes sure the drivers are loaded, makes
    // config (when given) the default timing of later requests and opens the
    // device. 0 on success; the driver manager's non-zero answer when no
    // driver could be loaded; 257 when the session could not be set up (the
    // drivers it loaded are unloaded again before it returns).
    int Initialize(const _BQMIPMIConfiguration* config);
    // Names the configuration file, then Initialize(nullptr).
    int Initialize(BQMString configFile);
    // Runs one request; the response is written into *request. 0 when an
    // answer was received (its completion code may still be non-zero); 257
    // for a null request or a library whose Initialize did not succeed;
    // otherwise the device layer's status.
    int IPMIRequest(_BQMIPMICommandData* request);
    // Closes the session and unloads the drivers this object loaded. The low
    // byte of the session release's answer (0 when a session was open).
    int Release();

private:
    // Unloads what the driver manager loaded and drops it.
    void ReleaseDrivers();

    BQMLoggingOptions mLoggerOptions;
    unsigned long mDriverUnloadPauseMs;
    IPlatformImpl& mPlatform;
    IIPMIDeviceIO& mDevice;
    IBQMIPMIDriverManager* mDriverManager;
    bool mReady;
};

#endif
