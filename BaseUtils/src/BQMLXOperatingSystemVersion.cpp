#include "BQMLXOperatingSystemVersion.h"

#include <strings.h>

#include <string>

#include "BQMLXOSProbe.h"

namespace {
const char* const kReleaseFile = "/etc/vmware-release";
const std::size_t kMaxLineLength = 1024;
}  // namespace

BQMLXOperatingSystemVersion::BQMLXOperatingSystemVersion(IBQMOSProbe* probe)
    : mProbe(probe != nullptr ? probe : &BQMLXOSProbe::Instance()) {}

BQMLXOperatingSystemVersion::~BQMLXOperatingSystemVersion() {}

bool BQMLXOperatingSystemVersion::Initialize() {
    bool isEsx = false;
    std::string line;
    if (mProbe->FileExists(kReleaseFile) && mProbe->ReadFirstLine(kReleaseFile, kMaxLineLength, line) &&
        line.find("VMware ESX") != std::string::npos) {
        mOSName = BQM_OS_NAME_ESX;
        isEsx = true;
    }
    std::string systemName, release;
    if (!mProbe->Uname(systemName, release)) return isEsx;
    mVersion = BQMString(release);
    mVersionText = BQMString(systemName + " " + release);
    if (strcasecmp(systemName.c_str(), "VMkernel") == 0) {
        mOSName = BQM_OS_NAME_ESXI;
        return true;
    }
    return isEsx;
}

BQMString BQMLXOperatingSystemVersion::GetVersion() { return mVersion; }

BQMString BQMLXOperatingSystemVersion::GetVendorVersion() {
    mVendorVersion = BQMString("6.5", BQMString::BQM_ENCODING_UTF8);
    return mVendorVersion;
}
