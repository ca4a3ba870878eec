#include "QVRInventoryDataFactory.h"

#include <new>
#include <utility>

#include "QVRXMLInventoryData.h"

IQVRInventoryRawData* QVRInventoryDataFactory::operator()(std::string& moduleIdentity, std::string& output,
                                                          QVRDataModelFilter* filter) const {
    if (!output.empty() && output.find("<SVMInventory") == std::string::npos) return nullptr;
    // The stored object takes the output over: a copy would double the largest
    // thing the run holds. The caller's text is left empty.
    return new (std::nothrow) QVRXMLInventoryData(moduleIdentity, std::move(output), filter);
}
