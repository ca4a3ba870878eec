#ifndef BQMLXOPERATINGSYSTEMVERSION_H
#define BQMLXOPERATINGSYSTEMVERSION_H

#include "BQMOperatingSystemVersion.h"
#include "IBQMOSProbe.h"

// Linux identification: tells ESX (code 18) and ESXi (code 19) hosts from any other
// Linux (code 0). Architecture, type and vendor-name codes stay 0.
class BQMLXOperatingSystemVersion : public BQMOperatingSystemVersion {
public:
    // probe, not owned, must outlive the object; null means the real system.
    explicit BQMLXOperatingSystemVersion(IBQMOSProbe* probe = nullptr);
    ~BQMLXOperatingSystemVersion() override;

    // 18 when the first line (at most 1024 characters) of "/etc/vmware-release" contains
    // "VMware ESX"; then 19, overriding it, when uname's system name equals "VMkernel"
    // ignoring case. True when either matched.
    bool Initialize() override;
    // uname's release, as read by Initialize.
    BQMString GetVersion() override;

    // Always "6.5": a fixed value, deliberately not read from the system.
    BQMString GetVendorVersion();

private:
    IBQMOSProbe* mProbe;
};

#endif
