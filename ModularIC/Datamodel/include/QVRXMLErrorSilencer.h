#ifndef QVRXMLERRORSILENCER_H
#define QVRXMLERRORSILENCER_H

#include <libxml/xmlerror.h>

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
    static void DropStructured(void* context, xmlErrorPtr error);

private:
    xmlGenericErrorFunc m_generic;
    void* m_genericContext;
    xmlStructuredErrorFunc m_structured;
    void* m_structuredContext;
};

#endif
