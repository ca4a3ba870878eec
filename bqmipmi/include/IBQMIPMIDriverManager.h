#ifndef IBQMIPMIDRIVERMANAGER_H
#define IBQMIPMIDRIVERMANAGER_H

// The wait before each driver is unloaded, so the kernel is done with the device.
constexpr unsigned long kIPMIDriverUnloadPauseMs = 3000;

// Makes sure the kernel's IPMI drivers are loaded, and unloads again what it loaded.
class IBQMIPMIDriverManager {
public:
    // 0 when the drivers are usable (or nothing is to be done), non-zero when
    // loading them failed.
    virtual int IsIPMIDriverAvailable() = 0;
    // Unloads the drivers this object loaded. Returns 0.
    virtual int ReleaseIPMIDriver() = 0;
    virtual ~IBQMIPMIDriverManager() {}
};

#endif
