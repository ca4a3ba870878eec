#ifndef CQVRBADALLOCEXCEPTION_H
#define CQVRBADALLOCEXCEPTION_H

#include <new>
#include <string>

// An allocation failure with the place it happened. A kind of std::bad_alloc,
// so handlers for std::bad_alloc see it first.
class CQVRBadAllocException : public std::bad_alloc {
public:
    explicit CQVRBadAllocException(const std::string& text);

    // The text made when a phase converts a caught std::bad_alloc:
    // what(), the shortened file, the function and the line, blank-separated, then "\n".
    static CQVRBadAllocException FromBadAlloc(const std::exception& caught, const std::string& file, long line,
                                              const std::string& function);

    const char* what() const noexcept override;

private:
    std::string m_text;
};

#endif
