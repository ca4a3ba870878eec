#include "BQMIPMIXMLConfig.h"

#include <libxml/parser.h>
#include <libxml/xmlmemory.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "BQMLogger.h"

namespace {

struct XmlCharDeleter {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
typedef std::unique_ptr<xmlChar, XmlCharDeleter> XmlCharPtr;

bool HasNameAttribute(xmlNodePtr node, const char* name) {
    XmlCharPtr value(xmlGetProp(node, reinterpret_cast<const xmlChar*>("name")));
    return value && std::strcmp(reinterpret_cast<const char*>(value.get()), name) == 0;
}

xmlNodePtr FindElementNamedDefault(xmlNodePtr parent) {
    for (xmlNodePtr child = parent->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE && HasNameAttribute(child, "Default")) return child;
    }
    return nullptr;
}

}  // namespace

void BQMIPMIXMLConfig::DocumentDeleter::operator()(xmlDoc* document) const { xmlFreeDoc(document); }

BQMIPMIXMLConfig::BQMIPMIXMLConfig()
    : mFileName("BQMIPMIConfig.xml", BQMString::BQM_ENCODING_UTF8),
      mDefaultNode(nullptr),
      mInitialized(false) {}

BQMIPMIXMLConfig::~BQMIPMIXMLConfig() {}

void BQMIPMIXMLConfig::SetConfigurationFileName(const BQMString& name) {
    mFileName = name;
    mDefaultNode = nullptr;
    mDocument.reset();
    mInitialized = false;
}

bool BQMIPMIXMLConfig::Initialize() {
    if (mInitialized) return true;
    const std::string path = mFileName.GetUTF8String();
    struct stat info;
    if (stat(path.c_str(), &info) != 0) {
        BQM_LOG(BQM_LOG_ERROR, "BQMIPMIXMLConfig::Initialize() - File Not Found");
        return false;
    }
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMIXMLConfig::Initialize() File exist");
    // No network, and parse errors stay out of the program's standard error.
    mDocument.reset(
        xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (!mDocument) {
        BQM_LOG(BQM_LOG_ERROR, "Parse unsuccessful");
        return false;
    }
    mInitialized = true;
    return true;
}

xmlNodePtr BQMIPMIXMLConfig::GetDefaultConfigNode() {
    if (mDefaultNode != nullptr) return mDefaultNode;
    if (!mDocument) return nullptr;
    xmlNodePtr root = xmlDocGetRootElement(mDocument.get());
    if (root == nullptr) {
        BQM_LOG(BQM_LOG_ERROR, "BQMRoot is NULL");
        return nullptr;
    }
    xmlNodePtr configuration = FindElementNamedDefault(root);
    if (configuration == nullptr) {
        BQM_LOG(BQM_LOG_ERROR, "No default IPMI config found");
        return nullptr;
    }
    xmlNodePtr device = FindElementNamedDefault(configuration);
    if (device == nullptr) {
        BQM_LOG(BQM_LOG_DEBUG, "No default device configuration node found");
        device = configuration;
    }
    mDefaultNode = device;
    return mDefaultNode;
}

bool BQMIPMIXMLConfig::GetConfigInt(const BQMString& key, int* value) {
    if (!Initialize()) {
        BQM_LOG(BQM_LOG_ERROR, "IPMI configuration not initialized");
        return false;
    }
    xmlNodePtr node = GetDefaultConfigNode();
    if (node == nullptr || value == nullptr) return false;
    const std::string wanted = key.GetUTF8String();
    for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE) continue;
        if (std::strcmp(reinterpret_cast<const char*>(child->name), wanted.c_str()) != 0) continue;
        XmlCharPtr text(xmlNodeListGetString(mDocument.get(), child->children, 1));
        *value =
            text ? static_cast<int>(std::strtol(reinterpret_cast<const char*>(text.get()), nullptr, 10)) : 0;
        return true;
    }
    return false;
}
