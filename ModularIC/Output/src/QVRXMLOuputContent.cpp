#include "QVRXMLOuputContent.h"

#include <cstdio>

#include "CDeviceInfo.h"
#include "QVRDataModel.h"
#include "QVRXMLOutputStream.h"
#include "QVRXMLStreamWriter.h"
#include "QVRXMLWriter.h"

namespace {
// Lower-case hexadecimal, no prefix, no padding, into the given buffer.
const char* Hex(unsigned int value, char (&text)[8]) {
    std::snprintf(text, sizeof(text), "%x", value);
    return text;
}
}  // namespace

QVRXMLOuputContent::QVRXMLOuputContent(QVRDataModel* dataModel, QVRXMLOutputStream* stream)
    : IQVROuputContent(dataModel), m_pOutputStream(stream) {}

bool QVRXMLOuputContent::Write() {
    if (m_pDataModel == nullptr || m_pOutputStream == nullptr ||
        m_pOutputStream->GetDocumentWriter() == nullptr || !m_pOutputStream->GetDocumentWriter()->IsStarted())
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
    QVRXMLStreamWriter* doc = m_pOutputStream->GetDocumentWriter();
    if (os == nullptr || doc == nullptr || !doc->IsStarted()) return false;
    doc->StartElement("OperatingSystem");
    doc->AddAttribute("osVendor", os->osVendor);
    doc->AddAttribute("osCode", os->osCode);
    doc->AddAttribute("osArch", os->osArch);
    doc->AddAttribute("majorVersion", os->majorVersion);
    doc->AddAttribute("minorVersion", os->minorVersion);
    if (!os->spMajorVersion.empty()) doc->AddAttribute("spMajorVersion", os->spMajorVersion);
    if (!os->spMinorVersion.empty()) doc->AddAttribute("spMinorVersion", os->spMinorVersion);
    if (!os->buildNumber.empty()) doc->AddAttribute("buildNumber", os->buildNumber);
    doc->EndElement();
    return true;
}

bool QVRXMLOuputContent::WriteSystemInfo() {
    if (m_pDataModel == nullptr || m_pOutputStream == nullptr) return false;
    const QVRCSystemInfo* system = m_pDataModel->GetSystemInfo();
    QVRXMLStreamWriter* doc = m_pOutputStream->GetDocumentWriter();
    if (system == nullptr || doc == nullptr || !doc->IsStarted()) return false;
    doc->StartElement("System");
    doc->AddAttribute("systemID", system->getSystemID());
    doc->EndElement();
    return true;
}

bool QVRXMLOuputContent::WritePCIDeviceInfo(const CDeviceInfo& device) {
    if (m_pOutputStream == nullptr) return false;
    QVRXMLStreamWriter* doc = m_pOutputStream->GetDocumentWriter();
    if (doc == nullptr || !doc->IsStarted()) return false;
    const SPCIInfo& pci = device.getPCIInfo();
    const unsigned int bdf = device.getBDFInfo();
    char number[3][8];
    doc->StartElement("Device");
    doc->AddAttribute("display", pci.display);
    if (!device.getEnumId().empty()) doc->AddAttribute("enum", device.getEnumId());
    if (!pci.componentID.empty()) doc->AddAttribute("componentID", pci.componentID);
    doc->AddAttribute("function", Hex(bdf & 0xFFu, number[0]));
    doc->AddAttribute("device", Hex((bdf >> 8) & 0xFFu, number[1]));
    doc->AddAttribute("bus", Hex((bdf >> 16) & 0xFFu, number[2]));
    doc->AddAttribute("subVendorID", pci.subVendorID);
    doc->AddAttribute("subDeviceID", pci.subDeviceID);
    doc->AddAttribute("deviceID", pci.deviceID);
    doc->AddAttribute("vendorID", pci.vendorID);
    return WriteApplicationInfo(device);
}

bool QVRXMLOuputContent::WriteNonPCIDeviceInfo(const CDeviceInfo& device) {
    if (m_pOutputStream == nullptr) return false;
    QVRXMLStreamWriter* doc = m_pOutputStream->GetDocumentWriter();
    if (doc == nullptr || !doc->IsStarted()) return false;
    doc->StartElement("Device");
    doc->AddAttribute("display", device.getDeviceName());
    doc->AddAttribute("componentID", device.getComponentID());
    if (!device.getEnumId().empty()) doc->AddAttribute("enum", device.getEnumId());
    if (!device.getFQDDInfo().empty()) doc->AddAttribute("FQDD", device.getFQDDInfo());
    return WriteApplicationInfo(device);
}

bool QVRXMLOuputContent::WriteApplicationInfo(const CDeviceInfo& device) {
    QVRXMLStreamWriter* doc = m_pOutputStream->GetDocumentWriter();
    doc->StartElement("Application");
    doc->AddAttribute("display", device.getDisplay());
    doc->AddAttribute("version", device.getVersion());
    doc->AddAttribute("componentType", device.getComponentType());
    doc->EndElement();
    doc->EndElement();
    return true;
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
