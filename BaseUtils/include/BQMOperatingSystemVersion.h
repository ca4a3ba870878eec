#ifndef BQMOPERATINGSYSTEMVERSION_H
#define BQMOPERATINGSYSTEMVERSION_H

#include "BQMString.h"

// Operating-system name codes.
enum BQMOSNameCode {
    BQM_OS_NAME_UNKNOWN = 0,
    BQM_OS_NAME_ESX = 18,   // the first line of "/etc/vmware-release" names "VMware ESX"
    BQM_OS_NAME_ESXI = 19,  // uname's system name is "VMkernel" in any case
};

// Which operating system the process runs on. All codes are 0 and all texts empty
// until a platform implementation's Initialize fills them.
class BQMOperatingSystemVersion {
public:
    BQMOperatingSystemVersion();
    virtual ~BQMOperatingSystemVersion();

    // Identifies the system; true when it was recognised. The base recognises nothing.
    virtual bool Initialize();
    // The running system's release text; empty in the base.
    virtual BQMString GetVersion();

    int GetOSName() const { return mOSName; }
    int GetOSArch() const { return mOSArch; }
    int GetOSType() const { return mOSType; }
    int GetOSVendorName() const { return mOSVendorName; }

protected:
    int mOSName;
    int mOSArch;
    int mOSType;
    int mOSVendorName;
    BQMString mVersion;
    BQMString mVendorVersion;
    BQMString mVersionText;
};

#endif
