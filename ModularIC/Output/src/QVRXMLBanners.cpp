#include "QVRXMLBanners.h"

#include "QVRDataModel.h"
#include "QVROutputClock.h"
#include "QVRXMLOutputStream.h"
#include "QVRXMLWriter.h"

QVRXMLBanners::QVRXMLBanners(QVR_E_MARGINS margin, QVRXMLOutputStream* stream, QVRDataModel* dataModel)
    : IQVRBanners(margin, dataModel), m_pOutputStream(stream) {}

bool QVRXMLBanners::Write() {
    if (m_eMargin != QVR_MARGIN_TOP) return true;
    if (m_pOutputStream == nullptr || m_pDataModel == nullptr) return false;
    QVRXMLWriter* doc = m_pOutputStream->GetDocumentWriter();
    QVRXMLWriter* errors = m_pOutputStream->GetErrorWriter();
    if (doc == nullptr || errors == nullptr) return false;

    const QVRCICInfo& collector = m_pDataModel->GetInventoryCollectorInfo();
    doc->AddHeader("1.0");
    xmlNodePtr root = doc->AddRootNode("SVMInventory");
    doc->AddNodePropertyWithValue(root, "lang", "en");
    doc->AddNodePropertyWithValue(root, "schemaVersion", "1.0");
    doc->AddNodePropertyWithValue(root, "timestamp", QVROutputClock::Timestamp());
    doc->AddNodePropertyWithValue(root, "sorvikVersion", collector.GetVersion());
    doc->AddNodePropertyWithValue(root, "sorvikBuild", collector.GetBuild());

    errors->AddHeader("1.0");
    xmlNodePtr errorRoot = errors->AddRootNode("InventoryError");
    errors->AddNodePropertyWithValue(errorRoot, "lang", "en");
    return root != nullptr && errorRoot != nullptr;
}
