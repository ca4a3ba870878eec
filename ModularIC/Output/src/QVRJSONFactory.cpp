#include "QVRJSONFactory.h"

#include <new>

#include "QVRJSONBanners.h"
#include "QVRJSONOuputContent.h"
#include "QVRJSONOutputStream.h"

QVRJSONFactory::QVRJSONFactory(QVRDataModel* dataModel, QVRArgumentList* arguments)
    : IQVRFactory(dataModel, arguments) {}

// The stream is always built first (Initalize) and always of this format.
IQVRBanners* QVRJSONFactory::InitTopBanner(QVR_E_MARGINS margin) const {
    return new (std::nothrow)
        QVRJSONBanners(margin, static_cast<QVRJSONOutputStream*>(m_pOutputStream), m_pDataModel);
}

IQVROuputContent* QVRJSONFactory::InitOuputContent() const {
    return new (std::nothrow)
        QVRJSONOuputContent(m_pDataModel, static_cast<QVRJSONOutputStream*>(m_pOutputStream));
}

IQVROutputStream* QVRJSONFactory::InitOutputStream() const {
    QVRJSONOutputStream* stream = new (std::nothrow) QVRJSONOutputStream(m_pArgumentList);
    if (stream != nullptr && !stream->IsReady()) {
        delete stream;
        return nullptr;
    }
    return stream;
}
