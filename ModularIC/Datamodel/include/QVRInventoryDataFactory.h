#ifndef QVRINVENTORYDATAFACTORY_H
#define QVRINVENTORYDATAFACTORY_H

#include <string>

#include "IQVRInventoryRawData.h"
#include "QVRDataModelFilter.h"

// Makes the raw-data object for one module run.
class QVRInventoryDataFactory {
public:
    // Null (the run contributes nothing, not even a failure record) when output
    // is non-empty and does not contain "<SVMInventory", or on allocation
    // failure; otherwise a new QVRXMLInventoryData, owned by the caller, that
    // has taken the text over (output is left empty).
    IQVRInventoryRawData* operator()(std::string& moduleIdentity, std::string& output,
                                     QVRDataModelFilter* filter) const;
};

#endif
