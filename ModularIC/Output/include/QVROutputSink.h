#ifndef QVROUTPUTSINK_H
#define QVROUTPUTSINK_H

#include <cstddef>
#include <memory>
#include <string>

class QVROutputFile;

// Where the bytes of one document go while it is being written: standard
// output (empty path) or a file that only takes the name once it is whole
// (QVROutputFile). Bytes are buffered; the first failure is kept, and what is
// written after it is dropped. Used from one thread.
class QVROutputSink {
public:
    explicit QVROutputSink(const std::string& path);
    QVROutputSink(const QVROutputSink&) = delete;
    QVROutputSink& operator=(const QVROutputSink&) = delete;
    // A file not closed successfully is removed; the name keeps what it held.
    ~QVROutputSink();

    // Prepares the destination. False (errno set) when no file could be made.
    bool Open();
    // Adds bytes to the document. False once anything has failed.
    bool Write(const char* data, std::size_t size);
    bool Write(const std::string& text) { return Write(text.data(), text.size()); }
    // Sends what is buffered, then makes a file durable and gives it its name,
    // or flushes standard output. False (errno set to the first failure's)
    // when any step of the document failed.
    bool Close();
    bool Failed() const { return m_error != 0; }
    int Error() const { return m_error; }
    bool IsStandardOutput() const { return m_path.empty(); }

private:
    bool Flush();
    void Fail(int error);

    std::string m_path;
    std::unique_ptr<QVROutputFile> m_file;  // null for standard output
    std::string m_buffer;
    int m_error;  // errno of the first failure, 0 while none
    bool m_open;
};

#endif
