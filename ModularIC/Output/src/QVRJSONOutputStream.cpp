#include "QVRJSONOutputStream.h"

#include <new>

#include "QVRArgumentList.h"
#include "QVRJSONStreamWriter.h"
#include "QVROptionKeys.h"

QVRJSONOutputStream::QVRJSONOutputStream(QVRArgumentList* arguments)
    : m_pWriter(nullptr), m_bOutputFile(false) {
    if (arguments != nullptr) {
        m_bOutputFile = arguments->HasOption(QVR_OPT_OUT);
        m_outputFilePath = arguments->GetFirstValue(QVR_OPT_OUT);
    }
    m_pWriter = new (std::nothrow) QVRJSONStreamWriter(m_outputFilePath);
}

QVRJSONOutputStream::~QVRJSONOutputStream() { delete m_pWriter; }

bool QVRJSONOutputStream::IsReady() const { return m_pWriter != nullptr; }

bool QVRJSONOutputStream::Write() { return m_pWriter == nullptr || m_pWriter->Finish(); }
