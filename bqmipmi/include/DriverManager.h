#ifndef DRIVERMANAGER_H
#define DRIVERMANAGER_H

#include "BQMEnvironmentInfo.h"
#include "BQMString.h"
#include "IBQMIPMIDriverManager.h"
#include "IBQMOSProbe.h"

// Checks for "ipmi_msghandler", "ipmi_devintf" and "ipmi_si" with lsmod, loads
// the missing ones with modprobe and, on release, removes with rmmod exactly
// those it found missing, three seconds apart, so the machine is left as it
// was found. Does nothing on VMware ESX hosts. Every shell command goes through
// CPlatformLayer. Not thread-safe.
class DriverManager : public IBQMIPMIDriverManager {
  public:
    // probe, not owned, must outlive the object; null means the real system.
    explicit DriverManager(IBQMOSProbe* probe = nullptr);
    ~DriverManager() override;
    DriverManager(const DriverManager&) = delete;
    DriverManager& operator=(const DriverManager&) = delete;

    int IsIPMIDriverAvailable() override;
    int ReleaseIPMIDriver() override;

    // One shell command each; the raw status of the shell call (0 is success).
    int IsDriverAvailable(BQMString name);
    int LoadDriver(BQMString name);
    // Pauses three seconds first.
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

    BQMEnvironmentInfo mEnvironment;
    bool devIntfLoaded;
    bool msgHandlerLoaded;
    bool siLoaded;
    bool driverReady;
    bool loadAttempted;
};

#endif
