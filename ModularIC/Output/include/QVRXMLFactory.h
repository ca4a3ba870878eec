#ifndef QVRXMLFACTORY_H
#define QVRXMLFACTORY_H

#include "IQVRFactory.h"

// The XML format: libxml2 documents saved through libxml2.
class QVRXMLFactory : public IQVRFactory {
public:
    QVRXMLFactory(QVRDataModel* dataModel, QVRArgumentList* arguments);
    IQVRBanners* InitTopBanner(QVR_E_MARGINS margin) const override;
    IQVROuputContent* InitOuputContent() const override;
    IQVROutputStream* InitOutputStream() const override;
};

#endif
