#include "QVRXMLErrorSilencer.h"

#include <libxml/globals.h>
#include <libxml/parser.h>

QVRXMLErrorSilencer::QVRXMLErrorSilencer() {
    xmlInitParser();
    m_generic = xmlGenericError;
    m_genericContext = xmlGenericErrorContext;
    m_structured = xmlStructuredError;
    m_structuredContext = xmlStructuredErrorContext;
    xmlSetGenericErrorFunc(nullptr, &QVRXMLErrorSilencer::DropGeneric);
    xmlSetStructuredErrorFunc(nullptr, &QVRXMLErrorSilencer::DropStructured);
}

QVRXMLErrorSilencer::~QVRXMLErrorSilencer() {
    xmlSetGenericErrorFunc(m_genericContext, m_generic);
    xmlSetStructuredErrorFunc(m_structuredContext, m_structured);
}

void QVRXMLErrorSilencer::DropGeneric(void*, const char*, ...) {}

void QVRXMLErrorSilencer::DropStructured(void*, QVRXMLErrorPtr) {}
