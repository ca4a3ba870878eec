#include "QVRJSONOuputContent.h"

#include "CDeviceInfo.h"
#include "QVRDataModel.h"
#include "QVRJSONOutputStream.h"
#include "QVRJSONWriter.h"

QVRJSONOuputContent::QVRJSONOuputContent(QVRDataModel* dataModel, QVRJSONOutputStream* stream)
    : IQVROuputContent(dataModel), m_pOutputStream(stream) {}

bool QVRJSONOuputContent::Write() {
    if (m_pDataModel == nullptr || m_pOutputStream == nullptr || !m_pOutputStream->IsReady()) return false;
    QVRJSONWriter* writer = m_pOutputStream->GetWriter();

    cJSON* inventory = writer->CreateObject();
    if (!writer->AddObjectToRoot(inventory, "UpdatableComponentsInventory")) return false;

    cJSON* os = writer->CreateObject();
    WriteOperatingSystemInfo(os);
    writer->AddObject(inventory, os, "OperatingSystem");

    cJSON* system = writer->CreateObject();
    const QVRCSystemInfo* systemInfo = m_pDataModel->GetSystemInfo();
    if (systemInfo != nullptr) writer->AddString(system, "systemID", systemInfo->getSystemID());
    writer->AddObject(inventory, system, "System");

    WriteDevices(writer->CreateArray(inventory, "UpdateableComponent"));
    return true;
}

bool QVRJSONOuputContent::WriteOperatingSystemInfo(cJSON* object) {
    if (object == nullptr || m_pDataModel == nullptr || m_pOutputStream == nullptr ||
        !m_pOutputStream->IsReady())
        return false;
    const SOSInfo* os = m_pDataModel->GetOperatingSystemInfo();
    if (os == nullptr) return false;
    QVRJSONWriter* writer = m_pOutputStream->GetWriter();
    if (!os->name.empty()) writer->AddString(object, "name", os->name);
    writer->AddString(object, "osVendor", os->osVendor);
    writer->AddString(object, "osCode", os->osCode);
    writer->AddString(object, "osArch", os->osArch);
    writer->AddString(object, "majorVersion", os->majorVersion);
    writer->AddString(object, "minorVersion", os->minorVersion);
    if (!os->spMajorVersion.empty()) writer->AddString(object, "spMajorVersion", os->spMajorVersion);
    if (!os->spMinorVersion.empty()) writer->AddString(object, "spMinorVersion", os->spMinorVersion);
    if (!os->buildNumber.empty()) writer->AddString(object, "buildNumber", os->buildNumber);
    return true;
}

bool QVRJSONOuputContent::WriteSystemInfo(cJSON* object) {
    if (object == nullptr || m_pDataModel == nullptr || m_pOutputStream == nullptr ||
        !m_pOutputStream->IsReady())
        return false;
    const QVRCSystemInfo* systemInfo = m_pDataModel->GetSystemInfo();
    if (systemInfo == nullptr) return false;
    return m_pOutputStream->GetWriter()->AddString(object, "systemID", systemInfo->getSystemID());
}

bool QVRJSONOuputContent::WriteDeviceInfo(cJSON* parent) {
    if (parent == nullptr || m_pDataModel == nullptr || m_pOutputStream == nullptr ||
        !m_pOutputStream->IsReady())
        return false;
    cJSON* array = m_pOutputStream->GetWriter()->CreateArray(parent, "UpdateableComponent");
    if (array == nullptr) return false;
    WriteDevices(array);
    return true;
}

void QVRJSONOuputContent::WriteDevices(cJSON* array) {
    if (array == nullptr) return;
    for (const CDeviceInfo* device : m_pDataModel->GetDeviceList()) {
        if (device == nullptr) continue;
        if (device->getDeviceType() == QVR_DEVICE_PCI)
            WritePCIDeviceInfo(array, *device);
        else if (device->getDeviceType() == QVR_DEVICE_NONPCI)
            WriteNonPCIDeviceInfo(array, *device);
    }
}

bool QVRJSONOuputContent::WritePCIDeviceInfo(cJSON* array, const CDeviceInfo& device) {
    if (array == nullptr || m_pOutputStream == nullptr || !m_pOutputStream->IsReady()) return false;
    QVRJSONWriter* writer = m_pOutputStream->GetWriter();
    cJSON* object = writer->CreateObject();
    if (object == nullptr) return false;
    const SPCIInfo& pci = device.getPCIInfo();
    writer->AddString(object, "name", device.getDisplay());
    writer->AddString(object, "componentType", device.getComponentType());
    if (!pci.componentID.empty()) writer->AddString(object, "componentID", pci.componentID);
    if (!device.getEnumId().empty()) writer->AddString(object, "componentInstance", device.getEnumId());
    writer->AddString(object, "vendorID", pci.vendorID);
    writer->AddString(object, "deviceID", pci.deviceID);
    writer->AddString(object, "subVendorID", pci.subVendorID);
    writer->AddString(object, "subDeviceID", pci.subDeviceID);
    writer->AddString(object, "version", device.getVersion());
    return writer->AdditemToArray(array, object);
}

bool QVRJSONOuputContent::WriteNonPCIDeviceInfo(cJSON* array, const CDeviceInfo& device) {
    if (array == nullptr || m_pOutputStream == nullptr || !m_pOutputStream->IsReady()) return false;
    QVRJSONWriter* writer = m_pOutputStream->GetWriter();
    cJSON* object = writer->CreateObject();
    if (object == nullptr) return false;
    writer->AddString(object, "name", device.getDisplay());
    writer->AddString(object, "componentType", device.getComponentType());
    writer->AddString(object, "componentID", device.getComponentID());
    writer->AddString(object, "version", device.getVersion());
    if (!device.getEnumId().empty()) writer->AddString(object, "componentInstance", device.getEnumId());
    if (!device.getFQDDInfo().empty()) writer->AddString(object, "fqdd", device.getFQDDInfo());
    return writer->AdditemToArray(array, object);
}
