#include "CQVRICException.h"

std::string QVRShortenSourceName(const std::string& file) {
    const std::string::size_type pos = file.find("qvr");
    return pos == std::string::npos ? file : file.substr(pos);
}

CQVRICException::CQVRICException(const std::string& file, long line, const std::string& function,
                                 const std::string& message, const std::string& type) {
    m_text = type + " - [" + message + "]\n\t at " + function + "(" + QVRShortenSourceName(file) + ":" +
             std::to_string(line) + ")";
}

const char* CQVRICException::what() const noexcept { return m_text.c_str(); }

void CQVRICException::AddStackTrace(const std::string& file, long line, const std::string& function) {
    m_text += "]\n\t at " + function + "(" + QVRShortenSourceName(file) + ":" + std::to_string(line) + ")";
}
