#include "QVRInventoryDataFactory.h"

#include <new>

#include "QVRXMLInventoryData.h"

IQVRInventoryRawData* QVRInventoryDataFactory::operator()(std::string& moduleIdentity, std::string& output,
                                                          QVRDataModelFilter* filter) const {
    if (!output.empty() && output.find("<SVMInventory") == std::string::npos) return nullptr;
    return new (std::nothrow) QVRXMLInventoryData(moduleIdentity, output, filter);
}
