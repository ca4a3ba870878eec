#include "QVRXMLParser.h"

#include <libxml/parser.h>

#include <cstring>

#include "QVRXMLErrorSilencer.h"
#include "QVRXMLSafeContext.h"

namespace {

// Owns one libxml2-allocated string.
class XmlText {
public:
    explicit XmlText(xmlChar* text) : m_text(text) {}
    ~XmlText() {
        if (m_text != nullptr) xmlFree(m_text);
    }
    XmlText(const XmlText&) = delete;
    XmlText& operator=(const XmlText&) = delete;
    std::string str() const {
        return m_text != nullptr ? reinterpret_cast<const char*>(m_text) : std::string();
    }

private:
    xmlChar* m_text;
};

}  // namespace

QVRXMLParser::QVRXMLParser(const std::string& text) : m_doc(nullptr) {
    QVRXMLErrorSilencer silence;
    xmlParserCtxtPtr ctxt = QVRNewSafeParserCtxt(text.c_str(), text.size());
    if (ctxt == nullptr) return;
    xmlParseDocument(ctxt);
    if (ctxt->wellFormed)
        m_doc = ctxt->myDoc;
    else if (ctxt->myDoc != nullptr)
        xmlFreeDoc(ctxt->myDoc);
    ctxt->myDoc = nullptr;
    xmlFreeParserCtxt(ctxt);
}

QVRXMLParser::~QVRXMLParser() {
    if (m_doc != nullptr) xmlFreeDoc(m_doc);
}

xmlNodePtr QVRXMLParser::GetRootNode() const {
    return m_doc != nullptr ? xmlDocGetRootElement(m_doc) : nullptr;
}

xmlNodePtr QVRXMLParser::GetChildNode(xmlNodePtr node) const {
    return node != nullptr ? node->children : nullptr;
}

std::string QVRXMLParser::GetNodeName(xmlNodePtr node) const {
    if (m_doc == nullptr) return std::string();
    return NodeName(node);
}

std::string QVRXMLParser::GetNodeProp(xmlNodePtr node, const char* name) const {
    return NodeProp(node, name);
}

std::string QVRXMLParser::GetNodeListString(xmlNodePtr node) const { return NodeListString(node); }

std::string QVRXMLParser::RawXMLDumpNode(xmlNodePtr node) const { return DumpNode(node); }

std::string QVRXMLParser::NodeName(const xmlNode* node) {
    if (node == nullptr || node->name == nullptr) return std::string();
    return reinterpret_cast<const char*>(node->name);
}

bool QVRXMLParser::IsElement(const xmlNode* node, const char* name) {
    return node != nullptr && node->type == XML_ELEMENT_NODE && node->name != nullptr &&
           std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

std::string QVRXMLParser::NodeProp(xmlNodePtr node, const char* name) {
    if (node == nullptr || name == nullptr) return std::string();
    // The common case read in place: an attribute without namespace whose
    // value is one text node, which is what xmlGetProp would copy out.
    if (node->type == XML_ELEMENT_NODE) {
        for (xmlAttrPtr attr = node->properties; attr != nullptr; attr = attr->next) {
            if (attr->ns != nullptr || attr->name == nullptr ||
                std::strcmp(reinterpret_cast<const char*>(attr->name), name) != 0)
                continue;
            const xmlNode* value = attr->children;
            if (value == nullptr) return std::string();
            if (value->next == nullptr &&
                (value->type == XML_TEXT_NODE || value->type == XML_CDATA_SECTION_NODE))
                return value->content != nullptr ? reinterpret_cast<const char*>(value->content)
                                                 : std::string();
            break;
        }
    }
    const xmlChar* key = reinterpret_cast<const xmlChar*>(name);
    if (xmlHasProp(node, key) == nullptr) return std::string();
    const XmlText value(xmlGetProp(node, key));
    return value.str();
}

std::string QVRXMLParser::NodeListString(xmlNodePtr node) {
    if (node == nullptr) return std::string();
    const XmlText value(xmlNodeListGetString(node->doc, node->children, 1));
    return value.str();
}

std::string QVRXMLParser::DumpNode(xmlNodePtr node) {
    if (node == nullptr) return std::string();
    QVRXMLErrorSilencer silence;
    xmlBufferPtr buffer = xmlBufferCreate();
    if (buffer == nullptr) return std::string();
    std::string text;
    if (xmlNodeDump(buffer, node->doc, node, 0, 1) >= 0) {
        const xmlChar* content = xmlBufferContent(buffer);
        if (content != nullptr) text.assign(reinterpret_cast<const char*>(content), xmlBufferLength(buffer));
    }
    xmlBufferFree(buffer);
    return text;
}
