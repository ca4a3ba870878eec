#ifndef IQVRINVENTORYRAWDATA_H
#define IQVRINVENTORYRAWDATA_H

#include <string>
#include <vector>

#include "CDeviceInfo.h"

// One module's unparsed output, turned into records on demand.
class IQVRInventoryRawData {
public:
    virtual ~IQVRInventoryRawData() = default;
    // Appends the records of the output to out; false when the output failed.
    virtual bool PopulateData(std::vector<CDeviceInfo*>& out) = 0;
    virtual const std::string& GetModuleName() const = 0;
};

#endif
