#ifndef QVRXMLWRITER_H
#define QVRXMLWRITER_H

#include <libxml/tree.h>

#include <string>

// Thin wrapper over a libxml2 document under construction. Owns the document
// and frees it (with every node attached to it) on destruction.
class QVRXMLWriter {
public:
    QVRXMLWriter();
    QVRXMLWriter(const QVRXMLWriter&) = delete;
    QVRXMLWriter& operator=(const QVRXMLWriter&) = delete;
    ~QVRXMLWriter();

    // A new document with that XML version (always "1.0"); a document built
    // before is freed.
    bool AddHeader(const char* version);
    bool AddHeader(const std::string& version);
    // A new element without namespace, set as the document's root, remembered
    // and returned; null when there is no document.
    xmlNodePtr AddRootNode(const char* name);
    xmlNodePtr AddRootNode(const std::string& name);
    // An attribute of the node; null when node or name is null.
    xmlAttrPtr AddNodePropertyWithValue(xmlNodePtr node, const char* name, const char* value);
    xmlAttrPtr AddNodePropertyWithValue(xmlNodePtr node, const char* name, const std::string& value);
    // A new element without namespace appended to the parent and returned; null
    // when the parent is null.
    xmlNodePtr AddNewChildNode(xmlNodePtr parent, const char* name);
    xmlNodePtr AddNewChildNode(xmlNodePtr parent, const std::string& name);
    // A child element with escaped text content.
    xmlNodePtr AddNewChildNodeText(xmlNodePtr parent, const char* name, const char* text);
    xmlNodePtr AddNewChildNodeText(xmlNodePtr parent, const std::string& name, const std::string& text);
    // Attaches a built node to the parent. On failure the node is freed.
    xmlNodePtr AddChildNode(xmlNodePtr parent, xmlNodePtr child);

    // Saves the document, indented, with the declaration naming the encoding,
    // through QVROutputSink: a file under exactly the name given (see
    // QVROutputFile), or standard output for an empty path or "-". An empty
    // encoding means "UTF-8". Encoding conversion is libxml2's. False with
    // errno when any part of the save failed.
    bool Write(const std::string& path, const std::string& encoding) const;

    // The node serialised (level 0, formatted); empty when there is no
    // document, no node, or nothing was dumped.
    std::string RawXMLDumpNode(xmlNodePtr node) const;

    xmlDocPtr GetDocument() const { return m_doc; }
    xmlNodePtr GetRootNode() const { return m_root; }

private:
    xmlDocPtr m_doc;
    xmlNodePtr m_root;
};

#endif
