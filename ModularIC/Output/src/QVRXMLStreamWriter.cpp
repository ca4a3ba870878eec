#include "QVRXMLStreamWriter.h"

#include <libxml/encoding.h>

#include <cerrno>
#include <cstring>

#include "QVRXMLErrorSilencer.h"

namespace {
const xmlChar* X(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

// Handed to the encoder in pieces of this size: large enough to keep the calls
// few, small enough to stay in cache.
const std::size_t kDrainSize = 64 * 1024;

// Bytes an attribute value may carry as they are. Anything else (markup,
// whitespace other than the space, control characters, bytes above ASCII) is
// left to libxml2's own escaping so the rules stay exactly its rules.
bool IsPlainAttributeByte(unsigned char c) {
    return c >= 0x20 && c < 0x7F && c != '<' && c != '>' && c != '&' && c != '"';
}
}  // namespace

QVRXMLStreamWriter::QVRXMLStreamWriter(const std::string& path, const std::string& encoding)
    : m_encoding(encoding.empty() ? std::string("UTF-8") : encoding),
      m_sink(path == "-" ? std::string() : path),  // libxml2's name for standard output
      m_out(nullptr),
      m_escapeDoc(nullptr),
      m_escaped(nullptr),
      m_startTagOpen(false),
      m_failed(false),
      m_error(0) {}

QVRXMLStreamWriter::~QVRXMLStreamWriter() {
    if (m_out != nullptr) xmlOutputBufferClose(m_out);
    if (m_escapeDoc != nullptr) xmlFreeDoc(m_escapeDoc);
    if (m_escaped != nullptr) xmlBufferFree(m_escaped);
}

int QVRXMLStreamWriter::WriteCallback(void* context, const char* data, int length) {
    QVROutputSink* sink = static_cast<QVROutputSink*>(context);
    return sink->Write(data, static_cast<std::size_t>(length)) ? length : -1;
}

bool QVRXMLStreamWriter::StartDocument(const char* version) {
    if (m_out != nullptr || m_failed) return false;
    QVRXMLErrorSilencer quiet;
    errno = 0;
    // As libxml2's save does: an encoding without an encoder writes nothing.
    xmlCharEncodingHandlerPtr handler = xmlFindCharEncodingHandler(m_encoding.c_str());
    if (handler == nullptr || !m_sink.Open()) {
        m_failed = true;
        m_error = errno != 0 ? errno : EIO;
        return false;
    }
    m_out = xmlOutputBufferCreateIO(&QVRXMLStreamWriter::WriteCallback, nullptr, &m_sink, handler);
    m_escapeDoc = xmlNewDoc(X(version));
    m_escaped = xmlBufferCreate();
    if (m_out == nullptr || m_escapeDoc == nullptr || m_escaped == nullptr) {
        m_failed = true;
        m_error = ENOMEM;
        return false;
    }
    m_escapeDoc->encoding = xmlStrdup(X(m_encoding.c_str()));
    // The declaration quotes its values as libxml2 does: double quotes unless
    // the value holds one.
    const auto quoted = [](const char* value) {
        const char quote = std::strchr(value, '"') != nullptr ? '\'' : '"';
        return quote + std::string(value) + quote;
    };
    Put("<?xml version=" + quoted(version) + " encoding=" + quoted(m_encoding.c_str()) + "?>\n");
    return true;
}

void QVRXMLStreamWriter::Put(const char* data, std::size_t size) {
    m_pending.append(data, size);
    if (m_pending.size() >= kDrainSize) Drain();
}

void QVRXMLStreamWriter::Drain() {
    // A failed write is reported by the caller, once, in its own words.
    QVRXMLErrorSilencer quiet;
    if (m_out != nullptr && !m_pending.empty() && !m_failed)
        xmlOutputBufferWrite(m_out, static_cast<int>(m_pending.size()), m_pending.data());
    m_pending.clear();
}

void QVRXMLStreamWriter::Indent(std::size_t level) {
    // libxml2 stops indenting deeper than 30 levels; no document here nests so far.
    static const char spaces[] = "                                                            ";
    Put(spaces, 2 * (level < 30 ? level : 30));
}

void QVRXMLStreamWriter::CloseStartTag() {
    if (!m_startTagOpen) return;
    Put(">\n", 2);
    m_startTagOpen = false;
}

void QVRXMLStreamWriter::StartElement(const char* name) {
    if (m_out == nullptr) return;
    CloseStartTag();
    Indent(m_open.size());
    Put("<", 1);
    Put(name, std::strlen(name));
    m_open.emplace_back(name);
    m_startTagOpen = true;
}

void QVRXMLStreamWriter::AddAttribute(const char* name, const char* value) {
    if (m_out == nullptr || !m_startTagOpen) return;
    Put(" ", 1);
    Put(name, std::strlen(name));
    Put("=\"", 2);
    PutEscapedAttribute(value != nullptr ? value : "");
    Put("\"", 1);
}

void QVRXMLStreamWriter::PutEscapedAttribute(const char* value) {
    const char* end = value;
    while (*end != '\0' && IsPlainAttributeByte(static_cast<unsigned char>(*end))) ++end;
    if (*end == '\0') {
        Put(value, static_cast<std::size_t>(end - value));
        return;
    }
    QVRXMLErrorSilencer quiet;
    xmlBufferEmpty(m_escaped);
    xmlAttrSerializeTxtContent(m_escaped, m_escapeDoc, nullptr, X(value));
    Put(reinterpret_cast<const char*>(xmlBufferContent(m_escaped)),
        static_cast<std::size_t>(xmlBufferLength(m_escaped)));
}

void QVRXMLStreamWriter::EndElement() {
    if (m_out == nullptr || m_open.empty()) return;
    if (m_startTagOpen) {
        Put("/>\n", 3);
        m_startTagOpen = false;
    } else {
        Indent(m_open.size() - 1);
        Put("</", 2);
        Put(m_open.back());
        Put(">\n", 2);
    }
    m_open.pop_back();
}

bool QVRXMLStreamWriter::Finish() {
    QVRXMLErrorSilencer quiet;
    while (!m_open.empty()) EndElement();
    Drain();
    bool written = !m_failed && m_out != nullptr;
    int error = m_out == nullptr && m_error == 0 ? EIO : m_error;
    if (m_out != nullptr) {
        errno = 0;
        const int closed = xmlOutputBufferClose(m_out);  // flushes through the encoder
        m_out = nullptr;
        if (closed < 0 && written) {
            written = false;
            error = errno;
        }
        if (m_sink.Failed()) {
            written = false;
            error = m_sink.Error();
        }
        // A failed file keeps its old content (the sink removes its temporary
        // file); standard output has what was made of the document.
        if ((written || m_sink.IsStandardOutput()) && !m_sink.Close() && written) {
            written = false;
            error = errno;
        }
    }
    m_failed = true;  // one document per writer
    errno = written ? 0 : (error != 0 ? error : EIO);
    return written;
}
