#include "QVRXMLOuputContent.h"

#include <sstream>

#include "CDeviceInfo.h"
#include "QVRDataModel.h"
#include "QVRXMLOutputStream.h"
#include "QVRXMLWriter.h"

namespace {
// Lower-case hexadecimal, no prefix, no padding.
std::string Hex(unsigned int value) {
    std::ostringstream text;
    text << std::hex << value;
    return text.str();
}
}  // namespace

QVRXMLOuputContent::QVRXMLOuputContent(QVRDataModel* dataModel, QVRXMLOutputStream* stream)
    : IQVROuputContent(dataModel), m_pOutputStream(stream) {}

bool QVRXMLOuputContent::Write() {
    if (m_pDataModel == nullptr || m_pOutputStream == nullptr ||
        m_pOutputStream->GetDocumentWriter() == nullptr ||
        m_pOutputStream->GetDocumentWriter()->GetRootNode() == nullptr)
        return false;
    WriteOperatingSystemInfo();
    WriteSystemInfo();
    for (const CDeviceInfo* device : m_pDataModel->GetDeviceList()) {
        if (device == nullptr) continue;
        if (device->getDeviceType() == QVR_DEVICE_PCI)
            WritePCIDeviceInfo(*device);
        else if (device->getDeviceType() == QVR_DEVICE_NONPCI)
            WriteNonPCIDeviceInfo(*device);
    }
    WriteErrorDeviceInfo();
    return true;
}

bool QVRXMLOuputContent::WriteOperatingSystemInfo() {
    if (m_pDataModel == nullptr || m_pOutputStream == nullptr) return false;
    const SOSInfo* os = m_pDataModel->GetOperatingSystemInfo();
    QVRXMLWriter* doc = m_pOutputStream->GetDocumentWriter();
    if (os == nullptr || doc == nullptr || doc->GetRootNode() == nullptr) return false;
    xmlNodePtr node = doc->AddNewChildNode(doc->GetRootNode(), "OperatingSystem");
    doc->AddNodePropertyWithValue(node, "osVendor", os->osVendor);
    doc->AddNodePropertyWithValue(node, "osCode", os->osCode);
    doc->AddNodePropertyWithValue(node, "osArch", os->osArch);
    doc->AddNodePropertyWithValue(node, "majorVersion", os->majorVersion);
    doc->AddNodePropertyWithValue(node, "minorVersion", os->minorVersion);
    if (!os->spMajorVersion.empty())
        doc->AddNodePropertyWithValue(node, "spMajorVersion", os->spMajorVersion);
    if (!os->spMinorVersion.empty())
        doc->AddNodePropertyWithValue(node, "spMinorVersion", os->spMinorVersion);
    if (!os->buildNumber.empty()) doc->AddNodePropertyWithValue(node, "buildNumber", os->buildNumber);
    return node != nullptr;
}

bool QVRXMLOuputContent::WriteSystemInfo() {
    if (m_pDataModel == nullptr || m_pOutputStream == nullptr) return false;
    const QVRCSystemInfo* system = m_pDataModel->GetSystemInfo();
    QVRXMLWriter* doc = m_pOutputStream->GetDocumentWriter();
    if (system == nullptr || doc == nullptr || doc->GetRootNode() == nullptr) return false;
    xmlNodePtr node = doc->AddNewChildNode(doc->GetRootNode(), "System");
    doc->AddNodePropertyWithValue(node, "systemID", system->getSystemID());
    return node != nullptr;
}

bool QVRXMLOuputContent::WritePCIDeviceInfo(const CDeviceInfo& device) {
    if (m_pOutputStream == nullptr) return false;
    QVRXMLWriter* doc = m_pOutputStream->GetDocumentWriter();
    if (doc == nullptr || doc->GetRootNode() == nullptr) return false;
    const SPCIInfo& pci = device.getPCIInfo();
    const unsigned int bdf = device.getBDFInfo();
    xmlNodePtr node = doc->AddNewChildNode(doc->GetRootNode(), "Device");
    doc->AddNodePropertyWithValue(node, "display", pci.display);
    if (!device.getEnumId().empty()) doc->AddNodePropertyWithValue(node, "enum", device.getEnumId());
    if (!pci.componentID.empty()) doc->AddNodePropertyWithValue(node, "componentID", pci.componentID);
    doc->AddNodePropertyWithValue(node, "function", Hex(bdf & 0xFFu));
    doc->AddNodePropertyWithValue(node, "device", Hex((bdf >> 8) & 0xFFu));
    doc->AddNodePropertyWithValue(node, "bus", Hex((bdf >> 16) & 0xFFu));
    doc->AddNodePropertyWithValue(node, "subVendorID", pci.subVendorID);
    doc->AddNodePropertyWithValue(node, "subDeviceID", pci.subDeviceID);
    doc->AddNodePropertyWithValue(node, "deviceID", pci.deviceID);
    doc->AddNodePropertyWithValue(node, "vendorID", pci.vendorID);
    return WriteApplicationInfo(node, device);
}

bool QVRXMLOuputContent::WriteNonPCIDeviceInfo(const CDeviceInfo& device) {
    if (m_pOutputStream == nullptr) return false;
    QVRXMLWriter* doc = m_pOutputStream->GetDocumentWriter();
    if (doc == nullptr || doc->GetRootNode() == nullptr) return false;
    xmlNodePtr node = doc->AddNewChildNode(doc->GetRootNode(), "Device");
    doc->AddNodePropertyWithValue(node, "display", device.getDeviceName());
    doc->AddNodePropertyWithValue(node, "componentID", device.getComponentID());
    if (!device.getEnumId().empty()) doc->AddNodePropertyWithValue(node, "enum", device.getEnumId());
    if (!device.getFQDDInfo().empty()) doc->AddNodePropertyWithValue(node, "FQDD", device.getFQDDInfo());
    return WriteApplicationInfo(node, device);
}

bool QVRXMLOuputContent::WriteApplicationInfo(xmlNodePtr deviceNode, const CDeviceInfo& device) {
    QVRXMLWriter* doc = m_pOutputStream->GetDocumentWriter();
    xmlNodePtr node = doc->AddNewChildNode(deviceNode, "Application");
    doc->AddNodePropertyWithValue(node, "display", device.getDisplay());
    doc->AddNodePropertyWithValue(node, "version", device.getVersion());
    doc->AddNodePropertyWithValue(node, "componentType", device.getComponentType());
    return node != nullptr;
}

bool QVRXMLOuputContent::WriteErrorDeviceInfo() {
    if (m_pDataModel == nullptr || m_pOutputStream == nullptr) return false;
    const std::vector<CDeviceInfo*>& errorList = m_pDataModel->GetErrorList();
    if (errorList.empty()) return true;
    QVRXMLWriter* errors = m_pOutputStream->GetErrorWriter();
    if (errors == nullptr || errors->GetRootNode() == nullptr) return false;
    bool any = false;
    for (const CDeviceInfo* record : errorList) {
        if (record == nullptr) continue;
        xmlNodePtr status = errors->AddNewChildNode(errors->GetRootNode(), "SPStatus");
        errors->AddNodePropertyWithValue(status, "module", record->getDisplay());
        errors->AddNodePropertyWithValue(status, "result", "false");
        const std::string& message = record->getErrorMsg();
        errors->AddNewChildNodeText(status, "Message",
                                    message.empty() ? std::string("Empty inventory results.") : message);
        any = true;
    }
    if (any) m_pOutputStream->SetErrorDocumentPresent(true);
    return true;
}
