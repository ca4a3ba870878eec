#include "QVRJSONOutputStream.h"

#include <new>

#include "QVRArgumentList.h"
#include "QVRJSONWriter.h"
#include "QVROptionKeys.h"

QVRJSONOutputStream::QVRJSONOutputStream(QVRArgumentList* arguments)
    : m_pWriter(new (std::nothrow) QVRJSONWriter()), m_bOutputFile(false) {
    if (m_pWriter != nullptr) m_pWriter->Initialize();
    if (arguments != nullptr) {
        m_bOutputFile = arguments->HasOption(QVR_OPT_OUT);
        m_outputFilePath = arguments->GetFirstValue(QVR_OPT_OUT);
    }
}

QVRJSONOutputStream::~QVRJSONOutputStream() { delete m_pWriter; }

bool QVRJSONOutputStream::IsReady() const { return m_pWriter != nullptr && m_pWriter->GetRoot() != nullptr; }

bool QVRJSONOutputStream::Write() { return m_pWriter == nullptr || m_pWriter->Write(m_outputFilePath); }
