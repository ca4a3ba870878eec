#ifndef BQMIPMISESSION_H
#define BQMIPMISESSION_H

#include "BQMIPMIData.h"
#include "BQMString.h"
#include "CPlatformLayer.h"
#include "IIPMIDeviceIO.h"

class BQMIPMIXMLConfig;
class CBQMIPMICommandData;
class IIPMICommandProcessor;

// One caller's connection to the management controller: a command processor
// (the open device) and the timing configuration its requests use. The timing
// comes from the session handler's application default, overridden by
// "BQMIPMIConfig.xml" when that file holds settings. One request at a time.
class BQMIPMISession {
public:
    BQMIPMISession();
    // Closes the device.
    virtual ~BQMIPMISession();
    BQMIPMISession(const BQMIPMISession&) = delete;
    BQMIPMISession& operator=(const BQMIPMISession&) = delete;

    // Done once: opens the device and settles the configuration; fallback,
    // when given, replaces the application default if the file gives nothing.
    // False when the device could not be opened (a later call tries again).
    // The device and platform, borrowed, serve this and every later request.
    bool Initialize(const _BQMIPMIConfiguration* fallback, IIPMIDeviceIO& device = IIPMIDeviceIO::Real(),
                    IPlatformImpl& platform = CPlatformLayer::Real());
    // Reads "RetryCount", "PollingInterval", "PollingCount", "RetryInterval"
    // from the configuration file; a missing key leaves its field unchanged.
    // False when the file has no default settings.
    bool InitializeFromFile();
    // Runs one request (initialising first if needed). The session's
    // configuration is used unless the command brings its own and the file
    // gave nothing; the command's configuration pointer is left as it was.
    // The processor's status, or 320 when the device cannot be opened.
    int ProcessCommand(CBQMIPMICommandData& command);
    // Closes the device; the next request initialises again.
    void Release();

    // Renames the configuration file shared by all sessions.
    static void SetConfigurationFileName(BQMString name);

    const _BQMIPMIConfiguration& GetConfiguration() const { return mConfiguration; }
    bool IsInitialized() const { return mInitialized; }
    bool IsConfiguredFromFile() const { return mConfiguredFromFile; }

private:
    static BQMIPMIXMLConfig& XMLConfig();

    IIPMICommandProcessor* mProcessor;
    IIPMIDeviceIO* mDevice;
    IPlatformImpl* mPlatform;
    bool mInitialized;
    bool mConfiguredFromFile;
    _BQMIPMIConfiguration mConfiguration;
};

#endif
