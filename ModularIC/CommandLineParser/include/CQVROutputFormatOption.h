#ifndef CQVROUTPUTFORMATOPTION_H
#define CQVROUTPUTFORMATOPTION_H

#include "IQVROptions.h"

// "outputformat": "XML" or "JSON" (case matters); 35 otherwise.
class CQVROutputFormatOption : public IQVROptions {
public:
    CQVROutputFormatOption();
    unsigned int Validate(std::string value) override;

    unsigned int validateOutPutFormatOption(const std::string& value) const;
};

#endif
