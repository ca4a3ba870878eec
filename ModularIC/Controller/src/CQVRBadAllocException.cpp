#include "CQVRBadAllocException.h"

#include "CQVRICException.h"

CQVRBadAllocException::CQVRBadAllocException(const std::string& text) : m_text(text) {}

CQVRBadAllocException CQVRBadAllocException::FromBadAlloc(const std::exception& caught, const std::string& file,
                                                          long line, const std::string& function) {
    return CQVRBadAllocException(std::string(caught.what()) + " " + QVRShortenSourceName(file) + " " + function +
                                 " " + std::to_string(line) + "\n");
}

const char* CQVRBadAllocException::what() const noexcept { return m_text.c_str(); }
