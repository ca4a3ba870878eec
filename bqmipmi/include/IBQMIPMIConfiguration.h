#ifndef IBQMIPMICONFIGURATION_H
#define IBQMIPMICONFIGURATION_H

#include "BQMString.h"

// A source of IPMI timing settings.
class IBQMIPMIConfiguration {
public:
    virtual ~IBQMIPMIConfiguration() {}
    // True when the settings could be loaded.
    virtual bool Initialize() = 0;
    // True with *value set when the default settings hold key.
    virtual bool GetConfigInt(const BQMString& key, int* value) = 0;
};

#endif
