#ifndef QVRXMLOUPUTCONTENT_H
#define QVRXMLOUPUTCONTENT_H

#include "IQVROuputContent.h"

class CDeviceInfo;
class QVRXMLOutputStream;

// Writes the inventory document below its root, one element after the other
// as it reads the data model, and fills the error document.
class QVRXMLOuputContent : public IQVROuputContent {
public:
    QVRXMLOuputContent(QVRDataModel* dataModel, QVRXMLOutputStream* stream);

    // Operating system, system, devices, then the error document. False only when
    // the banner has not built the documents (or stream/data model are missing).
    bool Write() override;

    // "OperatingSystem"; false when the data model has no operating-system record.
    bool WriteOperatingSystemInfo();
    // "System"; false when the data model has no system information.
    bool WriteSystemInfo();
    bool WritePCIDeviceInfo(const CDeviceInfo& device);
    bool WriteNonPCIDeviceInfo(const CDeviceInfo& device);
    // One "SPStatus" per error record; sets the stream's error-document flag
    // when there was at least one.
    bool WriteErrorDeviceInfo();

private:
    // The Application child of the device element just started; ends the device.
    bool WriteApplicationInfo(const CDeviceInfo& device);

    QVRXMLOutputStream* m_pOutputStream;  // not owned
};

#endif
