#pragma once
// What sorvik-audit reads from the collector's documents, whichever form they
// were written in (XML or JSON, UTF-8 or UTF-16). Every field is the text the
// document holds; absent fields are empty.
#include <string>
#include <vector>

namespace audit {

// One updatable component, named by the JSON inventory's own field names.
// From XML: name is the Application display text, componentInstance the
// Device enum, fqdd the Device FQDD, version the Application version.
struct Component {
    std::string name;
    std::string componentType;
    std::string componentID;
    std::string componentInstance;
    std::string fqdd;
    std::string vendorID;
    std::string deviceID;
    std::string subVendorID;
    std::string subDeviceID;
    std::string version;
};

struct OperatingSystem {
    std::string name;  // JSON only
    std::string osVendor;
    std::string osCode;
    std::string osArch;
    std::string majorVersion;
    std::string minorVersion;
    std::string spMajorVersion;
    std::string spMinorVersion;
    std::string buildNumber;
};

// One SPStatus entry of the collector's error document.
struct ModuleFailure {
    std::string module;  // the module's configured directory, e.g. "/storageinv"
    std::string message;
};

struct Inventory {
    std::string source;            // the path it was read from, "-" for standard input
    std::string timestamp;         // XML root "timestamp"; empty for JSON
    std::string collectorVersion;  // XML root "sorvikVersion"; empty for JSON
    std::string systemID;
    OperatingSystem os;
    std::vector<Component> components;  // in document order
    // Modules listed by an error document that followed the XML inventory in
    // the same stream (the collector's standard output when a module failed).
    std::vector<ModuleFailure> failures;
};

struct ErrorDocument {
    std::string source;
    std::vector<ModuleFailure> failures;
};

}  // namespace audit
