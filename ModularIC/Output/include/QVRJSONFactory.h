#ifndef QVRJSONFACTORY_H
#define QVRJSONFACTORY_H

#include "IQVRFactory.h"

// The JSON format: a cJSON tree, printed.
class QVRJSONFactory : public IQVRFactory {
public:
    QVRJSONFactory(QVRDataModel* dataModel, QVRArgumentList* arguments);
    IQVRBanners* InitTopBanner(QVR_E_MARGINS margin) const override;
    IQVROuputContent* InitOuputContent() const override;
    IQVROutputStream* InitOutputStream() const override;
};

#endif
