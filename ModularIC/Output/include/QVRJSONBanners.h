#ifndef QVRJSONBANNERS_H
#define QVRJSONBANNERS_H

#include "IQVRBanners.h"

class QVRJSONOutputStream;

// The JSON document has no header: Write does nothing.
class QVRJSONBanners : public IQVRBanners {
public:
    QVRJSONBanners(QVR_E_MARGINS margin, QVRJSONOutputStream* stream, QVRDataModel* dataModel);
    bool Write() override { return true; }

    QVRJSONOutputStream* GetOutputStream() const { return m_pOutputStream; }

private:
    QVRJSONOutputStream* m_pOutputStream;  // not owned
};

#endif
