#include "QVRXMLFactory.h"

#include <new>

#include "QVRXMLBanners.h"
#include "QVRXMLOuputContent.h"
#include "QVRXMLOutputStream.h"

QVRXMLFactory::QVRXMLFactory(QVRDataModel* dataModel, QVRArgumentList* arguments)
    : IQVRFactory(dataModel, arguments) {}

// The stream is always built first (Initalize) and always of this format.
IQVRBanners* QVRXMLFactory::InitTopBanner(QVR_E_MARGINS margin) const {
    return new (std::nothrow)
        QVRXMLBanners(margin, static_cast<QVRXMLOutputStream*>(m_pOutputStream), m_pDataModel);
}

IQVROuputContent* QVRXMLFactory::InitOuputContent() const {
    return new (std::nothrow)
        QVRXMLOuputContent(m_pDataModel, static_cast<QVRXMLOutputStream*>(m_pOutputStream));
}

IQVROutputStream* QVRXMLFactory::InitOutputStream() const {
    QVRXMLOutputStream* stream = new (std::nothrow) QVRXMLOutputStream(m_pArgumentList);
    if (stream != nullptr && !stream->IsReady()) {
        delete stream;
        return nullptr;
    }
    return stream;
}
