#include "QVRXMLSafeContext.h"

#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlversion.h>

#include <climits>
#include <cstring>
#include <new>

#include "QVRXMLErrorSilencer.h"

namespace {

// Feeds the parser from the caller's text, which outlives the context.
struct MemoryReader {
    const char* data;
    std::size_t size;
    std::size_t position;

    static int Read(void* context, char* buffer, int length) {
        MemoryReader* reader = static_cast<MemoryReader*>(context);
        if (length <= 0) return 0;
        std::size_t count = reader->size - reader->position;
        if (count > static_cast<std::size_t>(length)) count = static_cast<std::size_t>(length);
        std::memcpy(buffer, reader->data + reader->position, count);
        reader->position += count;
        return static_cast<int>(count);
    }
    static int Close(void* context) {
        delete static_cast<MemoryReader*>(context);
        return 0;
    }
};

}  // namespace

xmlParserCtxtPtr QVRNewSafeParserCtxt(const char* text, std::size_t length) {
    if (text == nullptr) return nullptr;
    // xmlParseDoc reads a C string: the document ends at the first NUL byte.
    const std::size_t size = strnlen(text, length);
    if (size == 0 || size > static_cast<std::size_t>(INT_MAX)) return nullptr;
    xmlInitParser();
    xmlParserCtxtPtr ctxt = xmlNewParserCtxt();
    if (ctxt == nullptr) return nullptr;
    xmlSAXVersion(ctxt->sax, 2);
    // Options first, then the fields they govern set explicitly, so that no
    // process-wide libxml2 default (xmlSubstituteEntitiesDefault,
    // xmlLoadExtDtdDefaultValue, ...) can switch entity loading back on.
    xmlCtxtUseOptions(ctxt, XML_PARSE_NONET);
    // The option bits too: a context starts with the process defaults' bits
    // (XML_PARSE_NOENT, XML_PARSE_DTDLOAD...), which xmlCtxtUseOptions only adds
    // to, and libxml2 loads external entities when it finds them there.
    ctxt->options = XML_PARSE_NONET;
    ctxt->replaceEntities = 0;
    ctxt->loadsubset = 0;
    ctxt->validate = 0;
    ctxt->recovery = 0;
    ctxt->keepBlanks = 1;
    ctxt->pedantic = 0;
    ctxt->sax->serror = &QVRXMLErrorSilencer::DropStructured;
    ctxt->vctxt.error = &QVRXMLErrorSilencer::DropGeneric;
    ctxt->vctxt.warning = &QVRXMLErrorSilencer::DropGeneric;

    // The text is handed over in pieces, the way a file is read, rather than
    // as one static buffer: libxml2 2.9 misplaces its position in a static
    // buffer when a start tag spans a buffer shrink, and a copy of the whole
    // text would double the memory of a large output.
    MemoryReader* reader = new (std::nothrow) MemoryReader{text, size, 0};
    if (reader == nullptr) {
        xmlFreeParserCtxt(ctxt);
        return nullptr;
    }
    xmlParserInputBufferPtr buffer = xmlParserInputBufferCreateIO(&MemoryReader::Read, &MemoryReader::Close,
                                                                  reader, XML_CHAR_ENCODING_NONE);
    if (buffer == nullptr) {
        delete reader;
        xmlFreeParserCtxt(ctxt);
        return nullptr;
    }
    xmlParserInputPtr input = xmlNewIOInputStream(ctxt, buffer, XML_CHAR_ENCODING_NONE);
    if (input == nullptr) {
        xmlFreeParserInputBuffer(buffer);
        xmlFreeParserCtxt(ctxt);
        return nullptr;
    }
    // 2.14 renamed the push and deprecated the old name.
#if LIBXML_VERSION >= 21400
    if (xmlCtxtPushInput(ctxt, input) < 0) {
#else
    if (inputPush(ctxt, input) < 0) {
#endif
        xmlFreeParserCtxt(ctxt);
        return nullptr;
    }
    return ctxt;
}
