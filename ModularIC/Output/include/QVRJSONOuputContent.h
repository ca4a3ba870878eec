#ifndef QVRJSONOUPUTCONTENT_H
#define QVRJSONOUPUTCONTENT_H

#include <cjson/cJSON.h>

#include "IQVROuputContent.h"

class CDeviceInfo;
class QVRJSONOutputStream;

// Fills the JSON document: "UpdatableComponentsInventory" with the operating
// system, the system and the "UpdateableComponent" array.
class QVRJSONOuputContent : public IQVROuputContent {
public:
    QVRJSONOuputContent(QVRDataModel* dataModel, QVRJSONOutputStream* stream);

    // False only when the stream's writer has no root (or stream/data model are missing).
    bool Write() override;

    // Fills the object with the operating-system members; false when there is
    // no operating-system record (the object stays empty).
    bool WriteOperatingSystemInfo(cJSON* object);
    // Adds "systemID" to the object; false when there is no system information.
    bool WriteSystemInfo(cJSON* object);
    // The "UpdateableComponent" array with the devices, under the parent.
    bool WriteDeviceInfo(cJSON* parent);
    // Append one device object to the array.
    bool WritePCIDeviceInfo(cJSON* array, const CDeviceInfo& device);
    bool WriteNonPCIDeviceInfo(cJSON* array, const CDeviceInfo& device);

private:
    void WriteDevices(cJSON* array);

    QVRJSONOutputStream* m_pOutputStream;  // not owned
};

#endif
