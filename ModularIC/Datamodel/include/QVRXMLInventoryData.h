#ifndef QVRXMLINVENTORYDATA_H
#define QVRXMLINVENTORYDATA_H

#include <libxml/tree.h>

#include <string>
#include <vector>

#include "CDeviceInfo.h"
#include "IQVRInventoryRawData.h"
#include "QVRDataModelFilter.h"

// One module's XML output (root "SVMInventory"), turned into records on demand:
// one per accepted "Device", one per "OperatingSystem" (each carrying all the
// document's entries), one for "System", one for an "SPStatus" whose result is
// "false", and a failure record for an empty or unparsable output.
//
// The document is parsed as a stream (QVRXMLStreamParser): each child of the
// root is read and freed in turn, and the output text is released once parsed,
// so a run's memory does not grow with the libxml2 tree of a large output.
class QVRXMLInventoryData : public IQVRInventoryRawData {
public:
    // Borrows filter (may be null: every device passes).
    QVRXMLInventoryData(const std::string& moduleIdentity, const std::string& output,
                        QVRDataModelFilter* filter);
    // Takes the output over rather than copying it.
    QVRXMLInventoryData(const std::string& moduleIdentity, std::string&& output, QVRDataModelFilter* filter);

    // Appends the records to out. False for an empty output ("Configured
    // program execution failure"), an unparsable one ("Invalid inventory XML
    // root element."), another root element (no record), or when the last child
    // of the root gave no record; true for a root without any known child.
    // Consumes the output: a second call adds nothing and answers false.
    bool PopulateData(std::vector<CDeviceInfo*>& out) override;
    const std::string& GetModuleName() const override { return m_moduleIdentity; }

    // Appends a failure record (display = module identity, status 1, message).
    // Returns false.
    bool PopulateEmptyInvData(std::vector<CDeviceInfo*>& out, const std::string& message);

    // The element parsers. Each fills record from node and answers whether the
    // record is to be kept; the caller owns (and on false deletes) the record.
    // "Device", "SPStatus", "System"; anything else is false.
    bool ParseXMLNode(xmlNodePtr node, CDeviceInfo* record);
    // PCI form when "vendorID" is non-empty; then an accepted "Application" is
    // required, and the filter must be satisfied.
    bool ParseDeviceNode(xmlNodePtr node, CDeviceInfo* record);
    bool ParsePCIDeviceNode(xmlNodePtr node, CDeviceInfo* record);
    bool ParseNonPCIDeviceNode(xmlNodePtr node, CDeviceInfo* record);
    // The last accepted "Application" child wins; "BIOS" only under component id "159".
    bool ParseDeviceApplicationNode(xmlNodePtr node, CDeviceInfo* record);
    // "SPStatus" with result "false": a failure record with the last "Message" text.
    bool ParseErrorDeviceNode(xmlNodePtr node, CDeviceInfo* record);
    // "System" with a non-empty "systemID": display "SystemInventory", id "002".
    bool ParseSystemNode(xmlNodePtr node, CDeviceInfo* record);
    // Given the root of a whole document: every "OperatingSystem" child's entry
    // into record, with display "OperatingSystem" and component id "001". True.
    bool ParseOperatingSystemNode(xmlNodePtr root, CDeviceInfo* record);
    // The nine attributes of one "OperatingSystem" element.
    static SOSInfo ReadOperatingSystemEntry(xmlNodePtr node);
    // True when the root has no child element "Device", "SPStatus",
    // "OperatingSystem" or "System": the inventory is empty (the name is spelled so).
    static bool CheckEmptyInvenetory(xmlNodePtr root);

    // Base-16 reading of a bus, device or function attribute; text that is not
    // hexadecimal reads 0.
    static unsigned char ReadHexByte(const std::string& text);

private:
    class StreamHandler;

    std::string m_moduleIdentity;
    std::string m_output;
    QVRDataModelFilter* m_filter;
    bool m_consumed;
};

#endif
