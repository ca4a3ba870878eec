#ifndef QVRJSONOUPUTCONTENT_H
#define QVRJSONOUPUTCONTENT_H

#include "IQVROuputContent.h"

class CDeviceInfo;
class QVRJSONOutputStream;

// Writes the JSON document: "UpdatableComponentsInventory" with the operating
// system, the system and the "UpdateableComponent" array, one member after the
// other as it reads the data model.
class QVRJSONOuputContent : public IQVROuputContent {
public:
    QVRJSONOuputContent(QVRDataModel* dataModel, QVRJSONOutputStream* stream);

    // Opens the document and writes it all. False only when the destination
    // could not be opened (or stream/data model are missing).
    bool Write() override;
    // The operating-system members, into the object open last; false when
    // there is no operating-system record (the object stays empty).
    bool WriteOperatingSystemInfo();
    // "systemID", into the object open last; false when there is no system information.
    bool WriteSystemInfo();
    // The "UpdateableComponent" array with the devices, into the object open last.
    bool WriteDeviceInfo();
    // One device object, appended to the array open last.
    bool WritePCIDeviceInfo(const CDeviceInfo& device);
    bool WriteNonPCIDeviceInfo(const CDeviceInfo& device);

private:
    bool Ready() const;

    QVRJSONOutputStream* m_pOutputStream;  // not owned
};

#endif
