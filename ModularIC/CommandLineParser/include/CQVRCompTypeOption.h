#ifndef CQVRCOMPTYPEOPTION_H
#define CQVRCOMPTYPEOPTION_H

#include "IQVROptions.h"

// "comptype": a comma-separated list of component types; 35, silently, for the
// first piece outside the set.
class CQVRCompTypeOption : public IQVROptions {
public:
    CQVRCompTypeOption();
    unsigned int Validate(std::string value) override;

    unsigned int validateCompType(const std::string& value);

private:
    void FillCompTypes();
    std::set<std::string> m_compTypes;
};

#endif
