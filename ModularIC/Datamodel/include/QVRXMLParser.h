#ifndef QVRXMLPARSER_H
#define QVRXMLPARSER_H

#include <libxml/tree.h>

#include <string>

// One libxml2 document parsed from text, with read access to its nodes.
//
// Parsing is safe for untrusted text: entities are not substituted, no DTD and
// no external entity is loaded, nothing is fetched from the network, libxml2's
// default limits (nesting, text size, entity amplification) stay on, and
// libxml2 prints nothing. Like xmlParseDoc, the text is read up to its first NUL
// byte. Not thread-safe; distinct instances may be used on distinct threads.
class QVRXMLParser {
public:
    explicit QVRXMLParser(const std::string& text);
    ~QVRXMLParser();
    QVRXMLParser(const QVRXMLParser&) = delete;
    QVRXMLParser& operator=(const QVRXMLParser&) = delete;

    // True when the text did not give a well-formed document.
    bool IsParsingError() const { return m_doc == nullptr; }
    // The root element, or null.
    xmlNodePtr GetRootNode() const;
    // The first child of node (of any kind), or null.
    xmlNodePtr GetChildNode(xmlNodePtr node) const;
    // The node's name; empty without a document or node.
    std::string GetNodeName(xmlNodePtr node) const;
    // The attribute's value; empty when absent.
    std::string GetNodeProp(xmlNodePtr node, const char* name) const;
    // The text of the node's children, entity references replaced.
    std::string GetNodeListString(xmlNodePtr node) const;
    // The node serialised as XML, formatted, at indentation level 0.
    std::string RawXMLDumpNode(xmlNodePtr node) const;

    // The same accessors for a node of any document (also one a
    // QVRXMLStreamParser hands out).
    static std::string NodeName(const xmlNode* node);
    static std::string NodeProp(xmlNodePtr node, const char* name);
    static std::string NodeListString(xmlNodePtr node);
    static std::string DumpNode(xmlNodePtr node);
    // Whether node is an element of that name.
    static bool IsElement(const xmlNode* node, const char* name);

private:
    xmlDocPtr m_doc;
};

#endif
