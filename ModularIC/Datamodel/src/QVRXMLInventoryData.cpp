#include "QVRXMLInventoryData.h"

#include <cstdlib>
#include <memory>
#include <new>

#include "QVROptionKeys.h"
#include "QVRXMLParser.h"
#include "QVRXMLStreamParser.h"

namespace {

const char* const kRootName = "SVMInventory";
const char* const kDevice = "Device";
const char* const kApplication = "Application";
const char* const kSPStatus = "SPStatus";
const char* const kMessage = "Message";
const char* const kSystem = "System";
const char* const kOperatingSystem = "OperatingSystem";

const char* const kExecutionFailure = "Configured program execution failure";
const char* const kInvalidDocument = "Invalid inventory XML root element.";
const char* const kOperatingSystemDisplay = "OperatingSystem";
const char* const kOperatingSystemComponentID = "001";
const char* const kSystemDisplay = "SystemInventory";
const char* const kSystemComponentID = "002";

std::string Prop(xmlNodePtr node, const char* name) { return QVRXMLParser::NodeProp(node, name); }

bool IsKnownChild(const xmlNode* node) {
    return QVRXMLParser::IsElement(node, kDevice) || QVRXMLParser::IsElement(node, kSPStatus) ||
           QVRXMLParser::IsElement(node, kOperatingSystem) || QVRXMLParser::IsElement(node, kSystem);
}

void MarkOperatingSystemRecord(CDeviceInfo* record) {
    record->setDisplay(kOperatingSystemDisplay);
    record->setComponentID(kOperatingSystemComponentID);
}

}  // namespace

// Builds the records of one document while it streams by. Records stay here
// until the document proved well-formed: a document that breaks off late gives
// only its failure record, as a whole-document parse would.
class QVRXMLInventoryData::StreamHandler : public QVRXMLStreamParser::Handler {
public:
    explicit StreamHandler(QVRXMLInventoryData& data)
        : m_data(data), m_osEntries(std::make_shared<std::vector<SOSInfo>>()) {}
    ~StreamHandler() override {
        for (CDeviceInfo* record : m_records) delete record;
    }

    void OnRoot(xmlNodePtr root) override { m_isInventory = QVRXMLParser::IsElement(root, kRootName); }

    bool OnRootChild(xmlNodePtr child) override {
        if (!m_isInventory) return true;
        if (IsKnownChild(child)) m_sawKnownChild = true;
        CDeviceInfo* record = new (std::nothrow) CDeviceInfo();
        if (record == nullptr) {
            m_lastResult = false;
            return false;
        }
        bool kept;
        if (QVRXMLParser::IsElement(child, kOperatingSystem)) {
            // Every such record carries all entries of the document: they are
            // collected here and shared by the records once the document ends.
            m_osEntries->push_back(ReadOperatingSystemEntry(child));
            MarkOperatingSystemRecord(record);
            m_osRecords.push_back(m_records.size());
            kept = true;
        } else {
            kept = m_data.ParseXMLNode(child, record);
        }
        if (kept)
            m_records.push_back(record);
        else
            delete record;
        m_lastResult = kept;
        return true;
    }

    // Hands the records to out; the result ParseXML gives for the document.
    bool Deliver(std::vector<CDeviceInfo*>& out) {
        if (!m_isInventory) return false;
        const std::shared_ptr<const std::vector<SOSInfo>> entries = m_osEntries;
        for (size_t index : m_osRecords) m_records[index]->setDependencyOS(entries);
        out.insert(out.end(), m_records.begin(), m_records.end());
        m_records.clear();
        return m_sawKnownChild ? m_lastResult : true;
    }

private:
    QVRXMLInventoryData& m_data;
    std::vector<CDeviceInfo*> m_records;
    std::shared_ptr<std::vector<SOSInfo>> m_osEntries;
    std::vector<size_t> m_osRecords;
    bool m_isInventory = false;
    bool m_sawKnownChild = false;
    bool m_lastResult = false;
};

QVRXMLInventoryData::QVRXMLInventoryData(const std::string& moduleIdentity, const std::string& output,
                                         QVRDataModelFilter* filter)
    : m_moduleIdentity(moduleIdentity), m_output(output), m_filter(filter), m_consumed(false) {}

QVRXMLInventoryData::QVRXMLInventoryData(const std::string& moduleIdentity, std::string&& output,
                                         QVRDataModelFilter* filter)
    : m_moduleIdentity(moduleIdentity), m_output(std::move(output)), m_filter(filter), m_consumed(false) {}

bool QVRXMLInventoryData::PopulateData(std::vector<CDeviceInfo*>& out) {
    if (m_consumed) return false;
    m_consumed = true;
    if (m_output.empty()) return PopulateEmptyInvData(out, kExecutionFailure);
    bool result;
    {
        StreamHandler handler(*this);
        const QVRXMLStreamParser::Result parsed =
            QVRXMLStreamParser::Parse(m_output.data(), m_output.size(), handler);
        if (parsed == QVRXMLStreamParser::kNotWellFormed) {
            result = PopulateEmptyInvData(out, kInvalidDocument);
        } else {
            result = handler.Deliver(out);
            // A record that could not be allocated ended the parse.
            if (parsed == QVRXMLStreamParser::kStopped) result = false;
        }
    }
    std::string().swap(m_output);
    return result;
}

bool QVRXMLInventoryData::PopulateEmptyInvData(std::vector<CDeviceInfo*>& out, const std::string& message) {
    CDeviceInfo* record = new (std::nothrow) CDeviceInfo();
    if (record == nullptr) return false;
    record->setDisplay(m_moduleIdentity);
    record->setStatus(QVR_STATUS_FAILURE);
    record->setErrorMsg(message);
    out.push_back(record);
    return false;
}

bool QVRXMLInventoryData::ParseXMLNode(xmlNodePtr node, CDeviceInfo* record) {
    if (node == nullptr || record == nullptr) return false;
    if (QVRXMLParser::IsElement(node, kDevice)) {
        if (!ParseDeviceNode(node, record)) return false;
        // Filtered devices never reach the data model.
        return m_filter == nullptr || m_filter->IsFilterSatisfied(record);
    }
    if (QVRXMLParser::IsElement(node, kSPStatus)) return ParseErrorDeviceNode(node, record);
    if (QVRXMLParser::IsElement(node, kSystem)) return ParseSystemNode(node, record);
    return false;
}

bool QVRXMLInventoryData::ParseDeviceNode(xmlNodePtr node, CDeviceInfo* record) {
    const bool parsed = Prop(node, "vendorID").empty() ? ParseNonPCIDeviceNode(node, record)
                                                       : ParsePCIDeviceNode(node, record);
    return parsed && ParseDeviceApplicationNode(node, record);
}

unsigned char QVRXMLInventoryData::ReadHexByte(const std::string& text) {
    return static_cast<unsigned char>(std::strtoul(text.c_str(), nullptr, 16));
}

bool QVRXMLInventoryData::ParsePCIDeviceNode(xmlNodePtr node, CDeviceInfo* record) {
    SPCIInfo pci;
    pci.componentID = Prop(node, "componentID");
    pci.deviceID = Prop(node, "deviceID");
    pci.subDeviceID = Prop(node, "subDeviceID");
    pci.vendorID = Prop(node, "vendorID");
    pci.subVendorID = Prop(node, "subVendorID");
    pci.display = Prop(node, "display");
    _BDFInfo bdf;
    bdf.bus = ReadHexByte(Prop(node, "bus"));
    bdf.device = ReadHexByte(Prop(node, "device"));
    bdf.function = ReadHexByte(Prop(node, "function"));
    // The record's own component id is the device's, so that the BIOS rule and
    // the component-id filter see PCI devices too. The device name stays empty:
    // a PCI device is named by its PCI record.
    record->setComponentID(pci.componentID);
    record->setPCIInfo(pci);
    record->setBDFInfo(bdf);
    record->setDeviceType(QVR_DEVICE_PCI);
    record->setEnumId(Prop(node, "enum"));
    return true;
}

bool QVRXMLInventoryData::ParseNonPCIDeviceNode(xmlNodePtr node, CDeviceInfo* record) {
    record->setComponentID(Prop(node, "componentID"));
    record->setDeviceName(Prop(node, "display"));
    record->setEnumId(Prop(node, "enum"));
    record->setFQDDInfo(Prop(node, "FQDD"));
    record->setDeviceType(QVR_DEVICE_NONPCI);
    return true;
}

bool QVRXMLInventoryData::ParseDeviceApplicationNode(xmlNodePtr node, CDeviceInfo* record) {
    bool accepted = false;
    for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
        if (!QVRXMLParser::IsElement(child, kApplication)) continue;
        const std::string componentType = Prop(child, "componentType");
        // Only the device with component id "159" may carry a BIOS application.
        if (componentType == QVR_COMPTYPE_BIOS && record->getComponentID() != QVR_BIOS_COMPONENT_ID) continue;
        record->setComponentType(componentType);
        record->setVersion(Prop(child, "version"));
        record->setDisplay(Prop(child, "display"));
        record->setStatus(QVR_STATUS_SUCCESS);
        accepted = true;
    }
    return accepted;
}

bool QVRXMLInventoryData::ParseErrorDeviceNode(xmlNodePtr node, CDeviceInfo* record) {
    if (Prop(node, "result") != "false") return false;
    record->setDisplay(m_moduleIdentity);
    record->setStatus(QVR_STATUS_FAILURE);
    for (xmlNodePtr child = node->children; child != nullptr; child = child->next)
        if (QVRXMLParser::IsElement(child, kMessage))
            record->setErrorMsg(QVRXMLParser::NodeListString(child));
    return true;
}

bool QVRXMLInventoryData::ParseSystemNode(xmlNodePtr node, CDeviceInfo* record) {
    const std::string systemID = Prop(node, "systemID");
    if (systemID.empty()) return false;
    QVRCSystemInfo system;
    system.setSystemInfo(systemID);
    record->setSystemInfo(system);
    record->setDisplay(kSystemDisplay);
    record->setComponentID(kSystemComponentID);
    return true;
}

SOSInfo QVRXMLInventoryData::ReadOperatingSystemEntry(xmlNodePtr node) {
    SOSInfo entry;
    entry.osVendor = Prop(node, "osVendor");
    entry.osArch = Prop(node, "osArch");
    entry.majorVersion = Prop(node, "majorVersion");
    entry.minorVersion = Prop(node, "minorVersion");
    entry.spMajorVersion = Prop(node, "spMajorVersion");
    entry.spMinorVersion = Prop(node, "spMinorVersion");
    entry.name = Prop(node, "name");
    entry.buildNumber = Prop(node, "buildNumber");
    entry.osCode = Prop(node, "osCode");
    return entry;
}

bool QVRXMLInventoryData::ParseOperatingSystemNode(xmlNodePtr root, CDeviceInfo* record) {
    if (record == nullptr) return false;
    std::vector<SOSInfo> entries;
    if (root != nullptr)
        for (xmlNodePtr child = root->children; child != nullptr; child = child->next)
            if (QVRXMLParser::IsElement(child, kOperatingSystem))
                entries.push_back(ReadOperatingSystemEntry(child));
    MarkOperatingSystemRecord(record);
    record->setDependencyOS(entries);
    return true;
}

bool QVRXMLInventoryData::CheckEmptyInvenetory(xmlNodePtr root) {
    if (root == nullptr) return true;
    for (xmlNodePtr child = root->children; child != nullptr; child = child->next)
        if (IsKnownChild(child)) return false;
    return true;
}
