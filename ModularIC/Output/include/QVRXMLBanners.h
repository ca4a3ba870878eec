#ifndef QVRXMLBANNERS_H
#define QVRXMLBANNERS_H

#include "IQVRBanners.h"

class QVRXMLOutputStream;

// The XML top banner: declaration and root element "SVMInventory" with its
// attributes, and the root "InventoryError" of the error document.
class QVRXMLBanners : public IQVRBanners {
public:
    QVRXMLBanners(QVR_E_MARGINS margin, QVRXMLOutputStream* stream, QVRDataModel* dataModel);
    // Does nothing (true) unless the margin is the top; false when the stream or
    // data model is missing.
    bool Write() override;

    QVRXMLOutputStream* GetOutputStream() const { return m_pOutputStream; }

private:
    QVRXMLOutputStream* m_pOutputStream;  // not owned
};

#endif
