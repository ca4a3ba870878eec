#ifndef CQVRMODULEDETAIL_H
#define CQVRMODULEDETAIL_H

#include <string>

// One configured inventory module, as read from the module configuration file.
struct CQVRModuleDetail {
    std::string configuredDir;           // "_dir" as written: the module's identity
    std::string workingDir;              // module base directory + "_dir"
    std::string type;                    // "cli" or "lib"
    std::string commandLine;             // "__text"
    std::string guid;                    // "#GUID"
    std::string compType;                // "_CmpType": comma-separated, or "NA"
    std::string priority;                // "_priority": "1" marks a priority module
    std::string isParallelRunSupported;  // "_isParallelRunSupported": "false" forces serial
};

#endif
