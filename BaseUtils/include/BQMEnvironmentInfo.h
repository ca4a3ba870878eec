#ifndef BQMENVIRONMENTINFO_H
#define BQMENVIRONMENTINFO_H

#include <memory>

#include "BQMOperatingSystemVersion.h"
#include "IBQMOSProbe.h"

// The environment the process runs in; today only the operating system. Not copyable.
class BQMEnvironmentInfo {
public:
    // probe, not owned, must outlive the object; null means the real system.
    explicit BQMEnvironmentInfo(IBQMOSProbe* probe = nullptr);
    ~BQMEnvironmentInfo();
    BQMEnvironmentInfo(const BQMEnvironmentInfo&) = delete;
    BQMEnvironmentInfo& operator=(const BQMEnvironmentInfo&) = delete;

    // Creates and identifies the operating-system version object once; later calls keep
    // it. True whether or not the system was recognised; false only if the object could
    // not be created.
    bool Initialize();

    // The version object's codes (0 before Initialize).
    int GetOSName() const;
    int GetOSArch() const;
    int GetOSType() const;
    int GetOSVendorName() const;
    // The version object, owned by this one; null before Initialize.
    BQMOperatingSystemVersion* GetOSVersion() const { return mOSVersion.get(); }

private:
    IBQMOSProbe* mProbe;
    std::unique_ptr<BQMOperatingSystemVersion> mOSVersion;
};

#endif
