#ifndef CQVRICEXCEPTION_H
#define CQVRICEXCEPTION_H

#include <exception>
#include <string>

// Returns the source name from its first "qvr" on (the project directory),
// or the whole name when it holds none.
inline std::string QVRShortenSourceName(const std::string& file) {
    const std::string::size_type pos = file.find("qvr");
    return pos == std::string::npos ? file : file.substr(pos);
}

// An unexpected failure of a collection run. Its text names the failing place
// and gains one frame for every phase it passes on its way to main.
class CQVRICException : public std::exception {
public:
    CQVRICException(const std::string& file, long line, const std::string& function,
                    const std::string& message, const std::string& type)
        : m_text(type + " - [" + message + "]\n\t at " + Place(file, line, function)) {}

    const char* what() const noexcept override { return m_text.c_str(); }

    // Appends the frame "]\n\t at function(file:line)".
    void AddStackTrace(const std::string& file, long line, const std::string& function) {
        m_text += "]\n\t at " + Place(file, line, function);
    }

private:
    static std::string Place(const std::string& file, long line, const std::string& function) {
        return function + "(" + QVRShortenSourceName(file) + ":" + std::to_string(line) + ")";
    }

    std::string m_text;
};

#endif
