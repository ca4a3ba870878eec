#include "BQMEnvironmentInfo.h"

#include <new>

#include "BQMLXOperatingSystemVersion.h"

BQMEnvironmentInfo::BQMEnvironmentInfo(IBQMOSProbe* probe) : mProbe(probe) {}

BQMEnvironmentInfo::~BQMEnvironmentInfo() {}

bool BQMEnvironmentInfo::Initialize() {
    if (mOSVersion) return true;
    mOSVersion.reset(new (std::nothrow) BQMLXOperatingSystemVersion(mProbe));
    if (!mOSVersion) return false;
    mOSVersion->Initialize();
    return true;
}

int BQMEnvironmentInfo::GetOSName() const { return mOSVersion ? mOSVersion->GetOSName() : 0; }
int BQMEnvironmentInfo::GetOSArch() const { return mOSVersion ? mOSVersion->GetOSArch() : 0; }
int BQMEnvironmentInfo::GetOSType() const { return mOSVersion ? mOSVersion->GetOSType() : 0; }
int BQMEnvironmentInfo::GetOSVendorName() const { return mOSVersion ? mOSVersion->GetOSVendorName() : 0; }
