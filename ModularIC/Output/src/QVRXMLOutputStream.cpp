#include "QVRXMLOutputStream.h"

#include <cerrno>
#include <new>

#include "QVRArgumentList.h"
#include "QVROptionKeys.h"
#include "QVRXMLStreamWriter.h"
#include "QVRXMLWriter.h"

QVRXMLOutputStream::QVRXMLOutputStream(QVRArgumentList* arguments)
    : m_pDocWriter(nullptr),
      m_pErrorWriter(new (std::nothrow) QVRXMLWriter()),
      m_bErrorFile(false),
      m_bOutputFile(false),
      m_bErrorDocPresent(false) {
    if (arguments != nullptr) {
        m_bErrorFile = arguments->HasOption(QVR_OPT_LOG);
        m_errorFilePath = arguments->GetFirstValue(QVR_OPT_LOG);
        m_bOutputFile = arguments->HasOption(QVR_OPT_OUT);
        m_outputFilePath = arguments->GetFirstValue(QVR_OPT_OUT);
        m_encoding = arguments->GetFirstValue(QVR_OPT_ENCODE);
    }
    m_pDocWriter =
        new (std::nothrow) QVRXMLStreamWriter(m_outputFilePath, ChooseEncoding(m_outputFilePath, m_encoding));
}

QVRXMLOutputStream::~QVRXMLOutputStream() {
    delete m_pDocWriter;
    delete m_pErrorWriter;
}

std::string QVRXMLOutputStream::ChooseEncoding(const std::string& path, const std::string& encoding) {
    if (path.empty()) return "UTF-8";
    if (encoding.empty()) return "UTF-16";
    return encoding;
}

bool QVRXMLOutputStream::Write() {
    // Both documents are attempted; the first failure's errno is kept.
    bool written = true;
    int error = 0;
    if (m_pDocWriter != nullptr && !m_pDocWriter->Finish()) {
        written = false;
        error = errno;
    }
    if (m_bErrorDocPresent && m_pErrorWriter != nullptr &&
        !m_pErrorWriter->Write(m_errorFilePath, ChooseEncoding(m_errorFilePath, m_encoding)) && written) {
        written = false;
        error = errno;
    }
    errno = error;
    return written;
}
