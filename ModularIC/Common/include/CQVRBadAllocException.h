#ifndef CQVRBADALLOCEXCEPTION_H
#define CQVRBADALLOCEXCEPTION_H

#include <new>
#include <string>

#include "CQVRICException.h"

// An allocation failure with the place it happened. A kind of std::bad_alloc,
// so handlers for std::bad_alloc see it first.
class CQVRBadAllocException : public std::bad_alloc {
public:
    explicit CQVRBadAllocException(const std::string& text) : m_text(text) {}

    // The text made when a phase converts a caught std::bad_alloc:
    // what(), the shortened file, the function and the line, blank-separated, then "\n".
    static CQVRBadAllocException FromBadAlloc(const std::exception& caught, const std::string& file,
                                              long line, const std::string& function) {
        return CQVRBadAllocException(std::string(caught.what()) + " " + QVRShortenSourceName(file) + " " +
                                     function + " " + std::to_string(line) + "\n");
    }

    const char* what() const noexcept override { return m_text.c_str(); }

private:
    std::string m_text;
};

#endif
