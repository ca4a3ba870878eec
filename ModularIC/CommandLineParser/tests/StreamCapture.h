#ifndef STREAMCAPTURE_H
#define STREAMCAPTURE_H

#include <unistd.h>

#include <cstdio>
#include <string>

// Sends what is written to a C stream (and its descriptor) into a temporary
// file until Finish, which restores the stream and returns the bytes.
class StreamCapture {
public:
    explicit StreamCapture(FILE* stream) : m_stream(stream), m_file(std::tmpfile()) {
        std::fflush(m_stream);
        if (m_file != nullptr) m_saved = ::dup(::fileno(m_stream));
        if (m_saved >= 0 && ::dup2(::fileno(m_file), ::fileno(m_stream)) < 0) Restore();
    }
    StreamCapture(const StreamCapture&) = delete;
    StreamCapture& operator=(const StreamCapture&) = delete;
    ~StreamCapture() {
        Restore();
        if (m_file != nullptr) std::fclose(m_file);
    }
    std::string Finish() {
        Restore();
        std::string text;
        if (m_file != nullptr) std::rewind(m_file);
        for (int c; m_file != nullptr && (c = std::fgetc(m_file)) != EOF;) text += static_cast<char>(c);
        return text;
    }

private:
    void Restore() {
        if (m_saved < 0) return;
        std::fflush(m_stream);
        ::dup2(m_saved, ::fileno(m_stream));
        ::close(m_saved);
        m_saved = -1;
    }
    FILE* m_stream;
    FILE* m_file;
    int m_saved = -1;
};

#endif
