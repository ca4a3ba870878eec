#ifndef CQVRICEXCEPTION_H
#define CQVRICEXCEPTION_H

#include <exception>
#include <string>

// Returns the source name from its first "qvr" on (the project directory),
// or the whole name when it holds none.
std::string QVRShortenSourceName(const std::string& file);

// An unexpected failure of a collection run. Its text names the failing place
// and gains one frame for every phase it passes on its way to main.
class CQVRICException : public std::exception {
public:
    CQVRICException(const std::string& file, long line, const std::string& function,
                    const std::string& message, const std::string& type);

    const char* what() const noexcept override;

    // Appends the frame "]\n\t at function(file:line)".
    void AddStackTrace(const std::string& file, long line, const std::string& function);

private:
    std::string m_text;
};

#endif
