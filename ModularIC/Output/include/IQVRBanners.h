#ifndef IQVRBANNERS_H
#define IQVRBANNERS_H

#include "QVROutputTypes.h"

class QVRDataModel;

// A document's top or bottom banner (header or trailer).
class IQVRBanners {
public:
    IQVRBanners(QVR_E_MARGINS margin, QVRDataModel* dataModel) : m_eMargin(margin), m_pDataModel(dataModel) {}
    virtual ~IQVRBanners() {}
    virtual bool Write() = 0;

    QVR_E_MARGINS GetMargin() const { return m_eMargin; }

protected:
    QVR_E_MARGINS m_eMargin;
    QVRDataModel* m_pDataModel;  // not owned
};

#endif
