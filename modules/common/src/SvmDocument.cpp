#include "svm/SvmDocument.h"

#include <libxml/tree.h>

#include <memory>
#include <new>

#include "svm/TextUtil.h"

namespace svm {
namespace {

const xmlChar* X(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

void SetAttr(xmlNodePtr node, const char* name, const std::string& value) {
    xmlNewProp(node, X(name), X(CleanText(value).c_str()));
}

void SetAttrIfAny(xmlNodePtr node, const char* name, const std::string& value) {
    std::string clean = CleanText(value);
    if (!clean.empty()) xmlNewProp(node, X(name), X(clean.c_str()));
}

xmlNodePtr AddChild(xmlNodePtr parent, const char* name) {
    xmlNodePtr node = xmlNewChild(parent, nullptr, X(name), nullptr);
    if (node == nullptr) throw std::bad_alloc();
    return node;
}

std::string Hex(unsigned value) { return FormatHex(value, 1); }

struct XmlFree {
    void operator()(xmlChar* p) const { xmlFree(p); }
};

}  // namespace

SvmDocument::SvmDocument() : m_doc(xmlNewDoc(X("1.0"))), m_root(nullptr) {
    if (m_doc == nullptr) throw std::bad_alloc();
    m_root = xmlNewDocNode(m_doc, nullptr, X("SVMInventory"), nullptr);
    if (m_root == nullptr) {
        xmlFreeDoc(m_doc);
        throw std::bad_alloc();
    }
    xmlDocSetRootElement(m_doc, m_root);
}

SvmDocument::~SvmDocument() { xmlFreeDoc(m_doc); }

SvmDocument::DeviceRef SvmDocument::AddPciDevice(const PciDeviceInfo& info) {
    xmlNodePtr node = AddChild(m_root, "Device");
    SetAttr(node, "display", info.display);
    SetAttrIfAny(node, "componentID", info.componentID);
    SetAttrIfAny(node, "enum", info.enumId);
    SetAttr(node, "vendorID", info.vendorID);
    SetAttr(node, "deviceID", info.deviceID);
    SetAttr(node, "subVendorID", info.subVendorID);
    SetAttr(node, "subDeviceID", info.subDeviceID);
    SetAttr(node, "bus", Hex(info.bus));
    SetAttr(node, "device", Hex(info.device));
    SetAttr(node, "function", Hex(info.function));
    ++m_devices;
    return node;
}

SvmDocument::DeviceRef SvmDocument::AddNonPciDevice(const NonPciDeviceInfo& info) {
    xmlNodePtr node = AddChild(m_root, "Device");
    SetAttr(node, "display", info.display);
    SetAttr(node, "componentID", info.componentID);
    SetAttrIfAny(node, "enum", info.enumId);
    SetAttrIfAny(node, "FQDD", info.fqdd);
    ++m_devices;
    return node;
}

void SvmDocument::AddApplication(DeviceRef device, const ApplicationInfo& info) {
    xmlNodePtr node = AddChild(device, "Application");
    SetAttr(node, "componentType", info.componentType);
    SetAttr(node, "version", info.version);
    SetAttr(node, "display", info.display);
}

void SvmDocument::AddFailure(const std::string& message) {
    xmlNodePtr node = AddChild(m_root, "SPStatus");
    SetAttr(node, "result", "false");
    // xmlNewTextChild escapes the text content.
    if (xmlNewTextChild(node, nullptr, X("Message"), X(CleanText(message).c_str())) == nullptr)
        throw std::bad_alloc();
    ++m_failures;
}

void SvmDocument::AddSystem(const std::string& systemID) {
    xmlNodePtr node = AddChild(m_root, "System");
    SetAttr(node, "systemID", systemID);
}

void SvmDocument::AddOperatingSystem(const OperatingSystemInfo& info) {
    xmlNodePtr node = AddChild(m_root, "OperatingSystem");
    SetAttr(node, "osVendor", info.osVendor);
    SetAttr(node, "osCode", info.osCode);
    SetAttr(node, "osArch", info.osArch);
    SetAttr(node, "name", info.name);
    SetAttr(node, "majorVersion", info.majorVersion);
    SetAttr(node, "minorVersion", info.minorVersion);
    SetAttrIfAny(node, "spMajorVersion", info.spMajorVersion);
    SetAttrIfAny(node, "spMinorVersion", info.spMinorVersion);
    SetAttrIfAny(node, "buildNumber", info.buildNumber);
}

std::string SvmDocument::ToString() const {
    xmlChar* raw = nullptr;
    int size = 0;
    xmlDocDumpFormatMemoryEnc(m_doc, &raw, &size, "UTF-8", 1);
    std::unique_ptr<xmlChar, XmlFree> owner(raw);
    if (raw == nullptr || size <= 0) throw std::bad_alloc();
    return std::string(reinterpret_cast<const char*>(raw), static_cast<size_t>(size));
}

bool SvmDocument::Write(std::FILE* out) const {
    std::string text = ToString();
    if (std::fwrite(text.data(), 1, text.size(), out) != text.size()) return false;
    return std::fflush(out) == 0;
}

}  // namespace svm
