#ifndef QVRXMLERRORSILENCER_H
#define QVRXMLERRORSILENCER_H

#include <libxml/xmlerror.h>
#include <libxml/xmlversion.h>

// libxml2 2.12 made the structured handler's error const.
#if LIBXML_VERSION >= 21200
typedef const xmlError* QVRXMLErrorPtr;
#else
typedef xmlErrorPtr QVRXMLErrorPtr;
#endif

// For the life of a scope, libxml2 reports nothing on this thread: its generic
// and structured error handlers (per thread in libxml2) are replaced by ones that
// drop every message, and the previous handlers come back on destruction. Bad
// module output must never reach the collector's standard error.
class QVRXMLErrorSilencer {
public:
    QVRXMLErrorSilencer();
    ~QVRXMLErrorSilencer();
    QVRXMLErrorSilencer(const QVRXMLErrorSilencer&) = delete;
    QVRXMLErrorSilencer& operator=(const QVRXMLErrorSilencer&) = delete;

    // Handlers that drop what they are given.
    static void DropGeneric(void* context, const char* format, ...);
    static void DropStructured(void* context, QVRXMLErrorPtr error);

private:
    xmlGenericErrorFunc m_generic;
    void* m_genericContext;
    xmlStructuredErrorFunc m_structured;
    void* m_structuredContext;
};

#endif
