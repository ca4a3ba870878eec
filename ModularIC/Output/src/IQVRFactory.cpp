#include "IQVRFactory.h"

#include "IQVRBanners.h"
#include "IQVROuputContent.h"
#include "IQVROutputStream.h"

IQVRFactory::IQVRFactory(QVRDataModel* dataModel, QVRArgumentList* arguments)
    : m_pDataModel(dataModel),
      m_pArgumentList(arguments),
      m_pTopBanner(nullptr),
      m_pButtomBanner(nullptr),
      m_pOuputContent(nullptr),
      m_pOutputStream(nullptr) {}

IQVRFactory::~IQVRFactory() { ReleaseCollaborators(); }

void IQVRFactory::ReleaseCollaborators() {
    // Banners and content point at the stream: they go first.
    delete m_pTopBanner;
    m_pTopBanner = nullptr;
    delete m_pButtomBanner;
    m_pButtomBanner = nullptr;
    delete m_pOuputContent;
    m_pOuputContent = nullptr;
    delete m_pOutputStream;
    m_pOutputStream = nullptr;
}

bool IQVRFactory::Initalize() {
    ReleaseCollaborators();
    m_pOutputStream = InitOutputStream();
    if (m_pOutputStream == nullptr) return false;
    m_pTopBanner = InitTopBanner(QVR_MARGIN_TOP);
    if (m_pTopBanner == nullptr) return false;
    m_pOuputContent = InitOuputContent();
    if (m_pOuputContent == nullptr) return false;
    m_pButtomBanner = InitButtomBanner(QVR_MARGIN_BOTTOM);
    return true;
}

bool IQVRFactory::Write() {
    if (m_pTopBanner == nullptr || m_pOuputContent == nullptr || m_pOutputStream == nullptr) return false;
    m_pTopBanner->Write();
    m_pOuputContent->Write();
    if (m_pButtomBanner != nullptr) m_pButtomBanner->Write();
    // False (errno set) when a document could not be written.
    return m_pOutputStream->Write();
}

IQVRBanners* IQVRFactory::InitButtomBanner(QVR_E_MARGINS) const { return nullptr; }
