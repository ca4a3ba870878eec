#ifndef QVRXMLSAFECONTEXT_H
#define QVRXMLSAFECONTEXT_H

#include <libxml/parser.h>

#include <cstddef>

// A parser context over text (up to its first NUL byte or length bytes, read in
// pieces, never copied whole; the text must outlive the context) with the safe settings every module document
// is parsed with: no entity substitution, no DTD loading, no validation, no network, no recovery, default
// limits, SAX2, and errors routed to a handler that drops them. Null when the text is empty or too long, or
// on allocation failure.
xmlParserCtxtPtr QVRNewSafeParserCtxt(const char* text, std::size_t length);

#endif
