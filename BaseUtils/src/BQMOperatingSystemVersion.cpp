#include "BQMOperatingSystemVersion.h"

BQMOperatingSystemVersion::BQMOperatingSystemVersion()
    : mOSName(0), mOSArch(0), mOSType(0), mOSVendorName(0) {}

BQMOperatingSystemVersion::~BQMOperatingSystemVersion() {}

bool BQMOperatingSystemVersion::Initialize() { return false; }

BQMString BQMOperatingSystemVersion::GetVersion() { return mVersion; }
