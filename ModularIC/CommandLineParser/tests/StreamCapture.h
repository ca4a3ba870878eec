#ifndef STREAMCAPTURE_H
#define STREAMCAPTURE_H

#include <unistd.h>

#include <cstdio>
#include <string>

// Sends everything written to a standard C stream (and its descriptor) into a
// temporary file until Finish, which returns the bytes and restores the stream.
class StreamCapture {
public:
    explicit StreamCapture(FILE* stream) : m_stream(stream), m_saved(-1), m_file(std::tmpfile()) {
        std::fflush(m_stream);
        if (m_file == nullptr) return;
        m_saved = ::dup(::fileno(m_stream));
        if (m_saved < 0 || ::dup2(::fileno(m_file), ::fileno(m_stream)) < 0) Restore();
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
        if (m_file == nullptr) return text;
        std::rewind(m_file);
        char buffer[4096];
        std::size_t count;
        while ((count = std::fread(buffer, 1, sizeof buffer, m_file)) > 0) text.append(buffer, count);
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
    int m_saved;
    FILE* m_file;
};

#endif
