#ifndef DRIVERMANAGER_H
#define DRIVERMANAGER_H

#include <string>
#include <vector>

#include "BQMEnvironmentInfo.h"
#include "BQMString.h"
#include "CPlatformLayer.h"
#include "IBQMIPMIDriverManager.h"
#include "IBQMOSProbe.h"

// Checks for "ipmi_msghandler", "ipmi_devintf" and "ipmi_si" with lsmod, loads
// the missing ones with modprobe and, on release, removes with rmmod exactly
// those it found missing, three seconds apart, so the machine is left as it
// was found. Modules the kernel loaded on top of them meanwhile (acpi_ipmi,
// for one) hold them in place, so those go first. Does nothing on VMware ESX
// hosts. Shell commands and pauses go through the given platform. Not
// thread-safe.
class DriverManager : public IBQMIPMIDriverManager {
public:
    // probe, not owned, must outlive the object; null means the real system.
    // unloadPauseMs is the wait before each rmmod of an IPMI driver. platform
    // is borrowed.
    explicit DriverManager(IBQMOSProbe* probe = nullptr,
                           unsigned long unloadPauseMs = kIPMIDriverUnloadPauseMs,
                           IPlatformImpl& platform = CPlatformLayer::Real());
    ~DriverManager() override;
    DriverManager(const DriverManager&) = delete;
    DriverManager& operator=(const DriverManager&) = delete;

    int IsIPMIDriverAvailable() override;
    int ReleaseIPMIDriver() override;

    // One shell command each; the raw status of the shell call (0 is success).
    int IsDriverAvailable(BQMString name);
    int LoadDriver(BQMString name);
    // Pauses first (three seconds unless the constructor said otherwise).
    int ReleaseDriver(BQMString name);

    // Loads the modules not found loaded. 1 when all three loads failed, else 0.
    int LoadIPMIDriver();

    bool IsMsgHandlerLoaded() const { return msgHandlerLoaded; }
    bool IsDevIntfLoaded() const { return devIntfLoaded; }
    bool IsSiLoaded() const { return siLoaded; }
    bool IsDriverReady() const { return driverReady; }
    bool IsLoadAttempted() const { return loadAttempted; }

private:
    // The operating-system name code: 18 VMware ESX, 19 VMware ESXi, 0 other.
    int GetOSName();
    // The modules, outside the three drivers, that hold one of those about to be
    // unloaded (directly or through each other): they can only have come with
    // this run. Ordered so that each comes before what it holds.
    std::vector<std::string> HoldersToUnload();

    BQMEnvironmentInfo mEnvironment;
    bool devIntfLoaded;
    bool msgHandlerLoaded;
    bool siLoaded;
    bool driverReady;
    bool loadAttempted;
    unsigned long mUnloadPauseMs;
    IPlatformImpl& mPlatform;
};

#endif
