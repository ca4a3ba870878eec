#include "XmlStream.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace audit {
namespace {

struct ParseState {
    XmlHandler* handler;
    xmlParserCtxtPtr context = nullptr;
    int depth = 0;
    bool failed = false;
    bool rootSeen = false;
    int line = 0, column = 0;
    std::string message;
    std::string root;
    std::string name;  // reused between elements
    XmlAttributes attributes;
};

ParseState& StateOf(void* context) {
    return *static_cast<ParseState*>(static_cast<xmlParserCtxtPtr>(context)->_private);
}

void Fail(ParseState& state, std::string message) {
    if (state.failed) return;
    state.failed = true;
    state.line = xmlSAX2GetLineNumber(state.context);
    state.column = xmlSAX2GetColumnNumber(state.context);
    state.message = std::move(message);
    xmlStopParser(state.context);
}

void OnStart(void* context, const xmlChar* localName, const xmlChar* prefix, const xmlChar*, int,
             const xmlChar**, int count, int, const xmlChar** attributes) {
    ParseState& state = StateOf(context);
    if (state.failed) return;
    if (state.depth == 0 && state.rootSeen) return;  // libxml2 reports a second root itself
    state.rootSeen = true;
    state.name.assign(reinterpret_cast<const char*>(localName));
    if (prefix != nullptr) state.name.insert(0, std::string(reinterpret_cast<const char*>(prefix)) + ":");
    state.attributes.resize(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        const xmlChar* const* attribute = attributes + 5 * i;
        auto& slot = state.attributes[static_cast<size_t>(i)];
        slot.first.assign(reinterpret_cast<const char*>(attribute[0]));
        if (attribute[1] != nullptr)
            slot.first.insert(0, std::string(reinterpret_cast<const char*>(attribute[1])) + ":");
        slot.second.assign(reinterpret_cast<const char*>(attribute[3]),
                           static_cast<size_t>(attribute[4] - attribute[3]));
        // Without entity substitution libxml2 hands "&amp;" on as "&#38;" for a
        // tree builder to decode; no other '&' can reach a value.
        for (size_t at = slot.second.find("&#38;"); at != std::string::npos;
             at = slot.second.find("&#38;", at + 1))
            slot.second.replace(at, 5, "&");
    }
    std::string error;
    if (!state.handler->Start(state.depth, state.name, state.attributes, error)) Fail(state, error);
    ++state.depth;
    if (state.depth == 1) state.root = state.name;
}

void OnEnd(void* context, const xmlChar* localName, const xmlChar*, const xmlChar*) {
    ParseState& state = StateOf(context);
    if (state.failed) return;
    --state.depth;
    std::string error;
    if (!state.handler->End(state.depth, reinterpret_cast<const char*>(localName), error)) Fail(state, error);
}

void OnText(void* context, const xmlChar* text, int length) {
    ParseState& state = StateOf(context);
    if (!state.failed) state.handler->Text(reinterpret_cast<const char*>(text), static_cast<size_t>(length));
}

void OnError(void* context, xmlErrorPtr error) {
    if (error == nullptr || error->level < XML_ERR_ERROR) return;
    ParseState& state = StateOf(context);
    if (state.failed) return;
    state.failed = true;
    state.line = error->line;
    state.column = error->int2;
    state.message = error->message != nullptr ? error->message : "not well-formed";
    if (error->code == XML_ERR_DOCUMENT_END && state.depth > 0)
        state.message = "truncated: the document ends before </" + state.root + ">";
    while (!state.message.empty() && (state.message.back() == '\n' || state.message.back() == ' '))
        state.message.pop_back();
}

void Silent(void*, const char*, ...) {}

// libxml2 prints errors it raises without a parser context through the
// thread's generic handler; none of them may reach standard error.
class GenericErrorsSilenced {
public:
    GenericErrorsSilenced() : m_function(xmlGenericError), m_context(xmlGenericErrorContext) {
        xmlSetGenericErrorFunc(nullptr, Silent);
    }
    ~GenericErrorsSilenced() { xmlSetGenericErrorFunc(m_context, m_function); }
    GenericErrorsSilenced(const GenericErrorsSilenced&) = delete;
    GenericErrorsSilenced& operator=(const GenericErrorsSilenced&) = delete;

private:
    xmlGenericErrorFunc m_function;
    void* m_context;
};

// Little-endian UTF-16 as UTF-8, appended to out: whole code units from
// data, a high surrogate at the end left for the next piece. Returns the bytes
// used, or npos for a broken surrogate pair. The push parser in libxml2 2.9
// loses a UTF-16 encoding found in its first chunk, so the reader converts
// such documents itself, a chunk at a time.
size_t Utf16ToUtf8(const char* data, size_t size, bool last, std::string& out, size_t& bad) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    size_t i = 0;
    for (; i + 1 < size; i += 2) {
        unsigned code = bytes[i] | (bytes[i + 1] << 8);
        if (code >= 0xD800 && code <= 0xDBFF) {
            if (i + 3 >= size) {
                if (last) return bad = i, std::string::npos;
                break;
            }
            const unsigned low = bytes[i + 2] | (bytes[i + 3] << 8);
            if (low < 0xDC00 || low > 0xDFFF) return bad = i, std::string::npos;
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            i += 2;
        } else if (code >= 0xDC00 && code <= 0xDFFF) {
            return bad = i, std::string::npos;
        }
        if (code < 0x80) {
            out += static_cast<char>(code);
        } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    if (last && i < size) return bad = i, std::string::npos;  // an odd byte at the end
    return i;
}

struct ContextDeleter {
    void operator()(xmlParserCtxtPtr context) const {
        if (context->myDoc != nullptr) xmlFreeDoc(context->myDoc);
        xmlFreeParserCtxt(context);
    }
};

}  // namespace

struct XmlPushParser::Impl {
    ParseState state;
    std::unique_ptr<xmlParserCtxt, ContextDeleter> context;
    std::string name;
    int firstLine = 0;
    bool done = false;
};

XmlPushParser::XmlPushParser(const std::string& name, int firstLine, XmlHandler& handler, bool ignoreEncoding)
    : m_impl(new Impl) {
    xmlSAXHandler sax;
    std::memset(&sax, 0, sizeof sax);
    sax.initialized = XML_SAX2_MAGIC;
    sax.startElementNs = OnStart;
    sax.endElementNs = OnEnd;
    sax.characters = OnText;
    sax.cdataBlock = OnText;
    sax.serror = OnError;
    m_impl->name = name;
    m_impl->firstLine = firstLine;
    m_impl->state.handler = &handler;
    GenericErrorsSilenced silenced;
    m_impl->context.reset(xmlCreatePushParserCtxt(&sax, nullptr, nullptr, 0, name.c_str()));
    if (!m_impl->context) return;
    m_impl->state.context = m_impl->context.get();
    m_impl->context->_private = &m_impl->state;
    int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOCDATA;
    if (ignoreEncoding) options |= XML_PARSE_IGNORE_ENC;
    xmlCtxtUseOptions(m_impl->context.get(), options);
}

XmlPushParser::~XmlPushParser() = default;

bool XmlPushParser::Feed(const char* data, size_t size, bool last, std::string& error) {
    Impl& impl = *m_impl;
    ParseState& state = impl.state;
    if (!impl.context) {
        error = impl.name + ": cannot start the XML parser";
        return false;
    }
    if (impl.done) return true;
    GenericErrorsSilenced silenced;
    constexpr size_t kChunk = 1 << 16;
    size_t at = 0;
    do {
        const size_t length = std::min(kChunk, size - at);
        const bool end = last && at + length == size;
        xmlParseChunk(impl.context.get(), data + at, static_cast<int>(length), end ? 1 : 0);
        at += length;
    } while (at < size && !state.failed);
    if (last && !state.failed && (!impl.context->wellFormed || !state.rootSeen)) {
        state.failed = true;
        state.line = xmlSAX2GetLineNumber(impl.context.get());
        state.column = xmlSAX2GetColumnNumber(impl.context.get());
        state.message = "not a complete XML document";
    }
    if (state.failed) {
        error = impl.name + ":" + std::to_string(impl.firstLine + state.line) + ":" +
                std::to_string(state.column) + ": " + state.message;
        impl.done = true;
        return false;
    }
    impl.done = last;
    return true;
}

bool Utf16Decoder::Decode(const char* data, size_t size, bool last, std::string& out, size_t& badByte) {
    const char* input = data;
    size_t length = size;
    if (!m_carry.empty()) {
        m_carry.append(data, size);
        input = m_carry.data();
        length = m_carry.size();
    }
    size_t bad = 0;
    const size_t used = Utf16ToUtf8(input, length, last, out, bad);
    if (used == std::string::npos) {
        badByte = m_offset + bad;
        return false;
    }
    m_offset += used;
    std::string rest(input + used, length - used);
    m_carry.swap(rest);
    return true;
}

bool ParseXml(const char* data, size_t size, const std::string& name, int firstLine, XmlHandler& handler,
              std::string& error) {
    const bool utf16 = size >= 2 && static_cast<unsigned char>(data[0]) == 0xFF &&
                       static_cast<unsigned char>(data[1]) == 0xFE;
    // The declaration of converted UTF-16 still says UTF-16.
    XmlPushParser parser(name, firstLine, handler, utf16);
    if (!utf16) return parser.Feed(data, size, true, error);
    Utf16Decoder decoder;
    constexpr size_t kChunk = 1 << 16;
    std::string converted;
    size_t at = 2;
    do {
        const size_t length = std::min(kChunk, size - at);
        const bool last = at + length == size;
        converted.clear();
        size_t bad = 0;
        if (!decoder.Decode(data + at, length, last, converted, bad)) {
            error = name + ": broken UTF-16 at byte " + std::to_string(2 + bad);
            return false;
        }
        if (!parser.Feed(converted.data(), converted.size(), last, error)) return false;
        at += length;
    } while (at < size);
    return true;
}

}  // namespace audit
