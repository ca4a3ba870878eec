#ifndef CQVRPROGRESSOPTION_H
#define CQVRPROGRESSOPTION_H

#include "IQVROptions.h"

// "progress": no value; tolerates only "encode" and "out" before it in key order.
class CQVRProgressOption : public IQVROptions {
public:
    CQVRProgressOption();
    unsigned int Validate(std::string value) override;
};

#endif
