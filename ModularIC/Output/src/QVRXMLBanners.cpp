#include "QVRXMLBanners.h"

#include "QVRDataModel.h"
#include "QVROutputClock.h"
#include "QVRXMLOutputStream.h"
#include "QVRXMLStreamWriter.h"
#include "QVRXMLWriter.h"

QVRXMLBanners::QVRXMLBanners(QVR_E_MARGINS margin, QVRXMLOutputStream* stream, QVRDataModel* dataModel)
    : IQVRBanners(margin, dataModel), m_pOutputStream(stream) {}

bool QVRXMLBanners::Write() {
    if (m_eMargin != QVR_MARGIN_TOP) return true;
    if (m_pOutputStream == nullptr || m_pDataModel == nullptr) return false;
    QVRXMLStreamWriter* doc = m_pOutputStream->GetDocumentWriter();
    QVRXMLWriter* errors = m_pOutputStream->GetErrorWriter();
    if (doc == nullptr || errors == nullptr) return false;

    const QVRCICInfo& collector = m_pDataModel->GetInventoryCollectorInfo();
    // The inventory document starts here and goes out as the content writes it.
    const bool started = doc->StartDocument("1.0");
    doc->StartElement("SVMInventory");
    doc->AddAttribute("lang", "en");
    doc->AddAttribute("schemaVersion", "1.0");
    doc->AddAttribute("timestamp", QVROutputClock::Timestamp());
    doc->AddAttribute("sorvikVersion", collector.GetVersion());
    doc->AddAttribute("sorvikBuild", collector.GetBuild());

    errors->AddHeader("1.0");
    xmlNodePtr errorRoot = errors->AddRootNode("InventoryError");
    errors->AddNodePropertyWithValue(errorRoot, "lang", "en");
    return started && errorRoot != nullptr;
}
