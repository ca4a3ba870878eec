#include "QVRJSONOuputContent.h"

#include "CDeviceInfo.h"
#include "QVRDataModel.h"
#include "QVRJSONOutputStream.h"
#include "QVRJSONStreamWriter.h"

QVRJSONOuputContent::QVRJSONOuputContent(QVRDataModel* dataModel, QVRJSONOutputStream* stream)
    : IQVROuputContent(dataModel), m_pOutputStream(stream) {}

bool QVRJSONOuputContent::Ready() const {
    return m_pDataModel != nullptr && m_pOutputStream != nullptr && m_pOutputStream->IsReady() &&
           m_pOutputStream->GetWriter()->IsStarted();
}

bool QVRJSONOuputContent::Write() {
    if (m_pDataModel == nullptr || m_pOutputStream == nullptr || !m_pOutputStream->IsReady()) return false;
    QVRJSONStreamWriter* writer = m_pOutputStream->GetWriter();
    if (!writer->StartDocument()) return false;
    writer->StartObject("UpdatableComponentsInventory");
    writer->StartObject("OperatingSystem");
    WriteOperatingSystemInfo();
    writer->End();
    writer->StartObject("System");
    WriteSystemInfo();
    writer->End();
    WriteDeviceInfo();
    writer->End();
    return true;
}

bool QVRJSONOuputContent::WriteOperatingSystemInfo() {
    if (!Ready()) return false;
    const SOSInfo* os = m_pDataModel->GetOperatingSystemInfo();
    if (os == nullptr) return false;
    QVRJSONStreamWriter* writer = m_pOutputStream->GetWriter();
    if (!os->name.empty()) writer->AddString("name", os->name);
    writer->AddString("osVendor", os->osVendor);
    writer->AddString("osCode", os->osCode);
    writer->AddString("osArch", os->osArch);
    writer->AddString("majorVersion", os->majorVersion);
    writer->AddString("minorVersion", os->minorVersion);
    if (!os->spMajorVersion.empty()) writer->AddString("spMajorVersion", os->spMajorVersion);
    if (!os->spMinorVersion.empty()) writer->AddString("spMinorVersion", os->spMinorVersion);
    if (!os->buildNumber.empty()) writer->AddString("buildNumber", os->buildNumber);
    return true;
}

bool QVRJSONOuputContent::WriteSystemInfo() {
    if (!Ready()) return false;
    const QVRCSystemInfo* systemInfo = m_pDataModel->GetSystemInfo();
    if (systemInfo == nullptr) return false;
    m_pOutputStream->GetWriter()->AddString("systemID", systemInfo->getSystemID());
    return true;
}

bool QVRJSONOuputContent::WriteDeviceInfo() {
    if (!Ready()) return false;
    QVRJSONStreamWriter* writer = m_pOutputStream->GetWriter();
    writer->StartArray("UpdateableComponent");
    for (const CDeviceInfo* device : m_pDataModel->GetDeviceList()) {
        if (device == nullptr) continue;
        if (device->getDeviceType() == QVR_DEVICE_PCI)
            WritePCIDeviceInfo(*device);
        else if (device->getDeviceType() == QVR_DEVICE_NONPCI)
            WriteNonPCIDeviceInfo(*device);
    }
    writer->End();
    return true;
}

bool QVRJSONOuputContent::WritePCIDeviceInfo(const CDeviceInfo& device) {
    if (!Ready()) return false;
    QVRJSONStreamWriter* writer = m_pOutputStream->GetWriter();
    const SPCIInfo& pci = device.getPCIInfo();
    writer->StartObject(nullptr);
    writer->AddString("name", device.getDisplay());
    writer->AddString("componentType", device.getComponentType());
    if (!pci.componentID.empty()) writer->AddString("componentID", pci.componentID);
    if (!device.getEnumId().empty()) writer->AddString("componentInstance", device.getEnumId());
    writer->AddString("vendorID", pci.vendorID);
    writer->AddString("deviceID", pci.deviceID);
    writer->AddString("subVendorID", pci.subVendorID);
    writer->AddString("subDeviceID", pci.subDeviceID);
    writer->AddString("version", device.getVersion());
    writer->End();
    return true;
}

bool QVRJSONOuputContent::WriteNonPCIDeviceInfo(const CDeviceInfo& device) {
    if (!Ready()) return false;
    QVRJSONStreamWriter* writer = m_pOutputStream->GetWriter();
    writer->StartObject(nullptr);
    writer->AddString("name", device.getDisplay());
    writer->AddString("componentType", device.getComponentType());
    writer->AddString("componentID", device.getComponentID());
    writer->AddString("version", device.getVersion());
    if (!device.getEnumId().empty()) writer->AddString("componentInstance", device.getEnumId());
    if (!device.getFQDDInfo().empty()) writer->AddString("fqdd", device.getFQDDInfo());
    writer->End();
    return true;
}
