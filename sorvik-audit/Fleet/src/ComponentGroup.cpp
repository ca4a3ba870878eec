#include "audit/fleet/ComponentGroup.h"

#include <cctype>

namespace audit {
namespace fleet {

namespace {

std::string DigitsAsStars(const std::string& text) {
    std::string pattern;
    for (char c : text) {
        if (std::isdigit(static_cast<unsigned char>(c))) {
            if (pattern.empty() || pattern.back() != '*') pattern += '*';
        } else {
            pattern += c;
        }
    }
    return pattern;
}

}  // namespace

std::string ComponentGroup(const std::string& systemID, const Component& component) {
    std::string group = "system " + systemID + ", ";
    if (!component.vendorID.empty() || !component.deviceID.empty()) {
        return group + component.componentType + ", PCI " + component.vendorID + ":" + component.deviceID +
               ":" + component.subVendorID + ":" + component.subDeviceID;
    }
    if (!component.fqdd.empty()) return group + DigitsAsStars(component.fqdd) + ", " + component.name;
    return group + component.componentType + ", " + component.name;
}

}  // namespace fleet
}  // namespace audit
