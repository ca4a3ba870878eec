#ifndef QVRXMLSTREAMWRITER_H
#define QVRXMLSTREAMWRITER_H

#include <libxml/tree.h>
#include <libxml/xmlIO.h>

#include <string>
#include <vector>

#include "QVROutputSink.h"

// Writes one XML document element by element, each element's bytes leaving as
// soon as they are known, so a document of any size costs a few buffers. The
// bytes are those libxml2 saves for the same tree with formatting on (two
// spaces a level, a newline after every element, empty elements closed with
// "/>"), in the same encoding, through the same encoder and the same escaping
// of attribute values. Elements hold attributes and child elements only.
// Used from one thread.
class QVRXMLStreamWriter {
public:
    // path empty or "-": standard output. encoding: a name libxml2 knows; empty
    // means "UTF-8".
    QVRXMLStreamWriter(const std::string& path, const std::string& encoding);
    QVRXMLStreamWriter(const QVRXMLStreamWriter&) = delete;
    QVRXMLStreamWriter& operator=(const QVRXMLStreamWriter&) = delete;
    ~QVRXMLStreamWriter();

    // Opens the destination and writes the declaration naming the version and
    // the encoding. False (errno set) when the destination or the encoder
    // cannot be had; the document then fails as a whole at Finish.
    bool StartDocument(const char* version);
    // Starts an element: the root first, then children of the innermost open
    // element.
    void StartElement(const char* name);
    // An attribute of the element just started (before any child of it).
    void AddAttribute(const char* name, const char* value);
    void AddAttribute(const char* name, const std::string& value) { AddAttribute(name, value.c_str()); }
    // Ends the innermost open element.
    void EndElement();
    // Ends every open element and completes the document (a file takes its
    // name only now). False with errno when any part of it failed.
    bool Finish();

    bool IsStarted() const { return m_out != nullptr; }

private:
    void Put(const char* data, std::size_t size);
    void Put(const std::string& text) { Put(text.data(), text.size()); }
    void PutEscapedAttribute(const char* value);
    void CloseStartTag();
    void Indent(std::size_t level);
    void Drain();
    static int WriteCallback(void* context, const char* data, int length);

    std::string m_encoding;
    QVROutputSink m_sink;
    xmlOutputBufferPtr m_out;  // owned; converts to the encoding, then to the sink
    xmlDocPtr m_escapeDoc;     // owned; an empty document naming the encoding, as libxml2 escapes with one
    xmlBufferPtr m_escaped;    // owned; scratch for escaped values
    std::string m_pending;     // UTF-8 bytes not yet handed to the encoder
    std::vector<std::string> m_open;
    bool m_startTagOpen;
    bool m_failed;
    int m_error;
};

#endif
