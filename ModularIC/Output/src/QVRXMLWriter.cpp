#include "QVRXMLWriter.h"

#include <libxml/encoding.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlsave.h>

#include <cerrno>

#include "QVROutputSink.h"
#include "QVRXMLErrorSilencer.h"

namespace {
const xmlChar* X(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

int WriteToSink(void* context, const char* data, int length) {
    return static_cast<QVROutputSink*>(context)->Write(data, static_cast<std::size_t>(length)) ? length : -1;
}
}  // namespace

QVRXMLWriter::QVRXMLWriter() : m_doc(nullptr), m_root(nullptr) {}

QVRXMLWriter::~QVRXMLWriter() {
    if (m_doc != nullptr) xmlFreeDoc(m_doc);
}

bool QVRXMLWriter::AddHeader(const char* version) {
    if (version == nullptr) return false;
    if (m_doc != nullptr) xmlFreeDoc(m_doc);
    m_root = nullptr;
    m_doc = xmlNewDoc(X(version));
    if (m_doc == nullptr) return false;
    // Element and attribute names repeat for every device: interned once in the
    // document's dictionary instead of copied into every node.
    m_doc->dict = xmlDictCreate();
    return true;
}

bool QVRXMLWriter::AddHeader(const std::string& version) { return AddHeader(version.c_str()); }

xmlNodePtr QVRXMLWriter::AddRootNode(const char* name) {
    if (m_doc == nullptr || name == nullptr) return nullptr;
    xmlNodePtr node = xmlNewDocNode(m_doc, nullptr, X(name), nullptr);
    if (node == nullptr) return nullptr;
    // The root replaced (if any) is unlinked by libxml2 and must be freed here.
    xmlNodePtr old = xmlDocSetRootElement(m_doc, node);
    if (old != nullptr) xmlFreeNode(old);
    m_root = node;
    return node;
}

xmlNodePtr QVRXMLWriter::AddRootNode(const std::string& name) { return AddRootNode(name.c_str()); }

xmlAttrPtr QVRXMLWriter::AddNodePropertyWithValue(xmlNodePtr node, const char* name, const char* value) {
    if (node == nullptr || name == nullptr) return nullptr;
    return xmlNewProp(node, X(name), value != nullptr ? X(value) : nullptr);
}

xmlAttrPtr QVRXMLWriter::AddNodePropertyWithValue(xmlNodePtr node, const char* name,
                                                  const std::string& value) {
    return AddNodePropertyWithValue(node, name, value.c_str());
}

xmlNodePtr QVRXMLWriter::AddNewChildNode(xmlNodePtr parent, const char* name) {
    if (parent == nullptr || name == nullptr) return nullptr;
    xmlNodePtr node = xmlNewDocNode(parent->doc, nullptr, X(name), nullptr);
    if (node == nullptr) return nullptr;
    return AddChildNode(parent, node);
}

xmlNodePtr QVRXMLWriter::AddNewChildNode(xmlNodePtr parent, const std::string& name) {
    return AddNewChildNode(parent, name.c_str());
}

xmlNodePtr QVRXMLWriter::AddNewChildNodeText(xmlNodePtr parent, const char* name, const char* text) {
    if (parent == nullptr || name == nullptr) return nullptr;
    return xmlNewTextChild(parent, nullptr, X(name), text != nullptr ? X(text) : nullptr);
}

xmlNodePtr QVRXMLWriter::AddNewChildNodeText(xmlNodePtr parent, const std::string& name,
                                             const std::string& text) {
    return AddNewChildNodeText(parent, name.c_str(), text.c_str());
}

xmlNodePtr QVRXMLWriter::AddChildNode(xmlNodePtr parent, xmlNodePtr child) {
    if (child == nullptr) return nullptr;
    if (parent == nullptr) {
        xmlFreeNode(child);
        return nullptr;
    }
    xmlNodePtr added = xmlAddChild(parent, child);
    // xmlAddChild frees a text child it merges and returns the merged node; it
    // only declines (null) without taking the node.
    if (added == nullptr) xmlFreeNode(child);
    return added;
}

bool QVRXMLWriter::Write(const std::string& path, const std::string& encoding) const {
    if (m_doc == nullptr) return false;
    const std::string enc = encoding.empty() ? std::string("UTF-8") : encoding;
    // A failed write is reported by the caller, once, in its own words.
    QVRXMLErrorSilencer quiet;
    errno = 0;
    // As libxml2's own save: an encoding without an encoder writes nothing.
    xmlCharEncodingHandlerPtr encoder = xmlFindCharEncodingHandler(enc.c_str());
    if (encoder == nullptr) {
        errno = EINVAL;
        return false;
    }
    // libxml2 never opens the name itself: it would unescape "%20" and drop
    // "file://". "-" is its name for standard output, whoever gives it.
    QVROutputSink sink(path == "-" ? std::string() : path);
    if (!sink.Open()) return false;
    xmlOutputBufferPtr out = xmlOutputBufferCreateIO(&WriteToSink, nullptr, &sink, encoder);
    if (out == nullptr) {
        errno = ENOMEM;
        return false;
    }
    // The same save as xmlSaveFormatFileEnc, closing the buffer through the encoder.
    bool written = xmlSaveFormatFileTo(out, m_doc, enc.c_str(), 1) >= 0 && !sink.Failed();
    int error = sink.Failed() ? sink.Error() : (errno != 0 ? errno : EIO);
    // A failed file keeps its old content (the sink removes its temporary
    // file); standard output has what was made of the document.
    if ((written || sink.IsStandardOutput()) && !sink.Close() && written) {
        written = false;
        error = errno;
    }
    errno = written ? 0 : error;
    return written;
}

std::string QVRXMLWriter::RawXMLDumpNode(xmlNodePtr node) const {
    if (m_doc == nullptr || node == nullptr) return std::string();
    xmlBufferPtr buffer = xmlBufferCreate();
    if (buffer == nullptr) return std::string();
    std::string text;
    const int length = xmlNodeDump(buffer, m_doc, node, 0, 1);
    if (length > 0 && xmlBufferContent(buffer) != nullptr)
        text.assign(reinterpret_cast<const char*>(xmlBufferContent(buffer)), xmlBufferLength(buffer));
    xmlBufferFree(buffer);
    return text;
}
