#ifndef SVM_OSINVENTORY_H
#define SVM_OSINVENTORY_H

#include <map>
#include <string>

#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"

namespace svm {

// Parses os-release text: KEY=value lines, values optionally in double or
// single quotes with backslash escapes; comments and malformed lines skipped.
std::map<std::string, std::string> ParseOsRelease(const std::string& text);

// Builds the operating-system entry from os-release fields and the machine
// architecture: osVendor VENDOR_NAME (else NAME), osCode ID, name PRETTY_NAME
// (else NAME), major and minor version from VERSION_ID split at the first ".",
// buildNumber BUILD_ID.
OperatingSystemInfo MakeOperatingSystem(const std::map<std::string, std::string>& fields,
                                        const std::string& arch);

// Adds one "OperatingSystem" from /etc/os-release (else /usr/lib/os-release)
// and the architecture (<root>/proc/sys/kernel/arch, else uname(2) when the
// root is "/").
void CollectOsInventory(const ModuleOptions& options, SvmDocument& doc);

}  // namespace svm

#endif
