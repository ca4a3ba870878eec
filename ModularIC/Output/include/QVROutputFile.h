#ifndef QVROUTPUTFILE_H
#define QVROUTPUTFILE_H

#include <string>

// Where one output document is written so that a failed write never leaves a
// truncated document under its final name: a regular file (or a new one) is
// written as a temporary file in the same directory and renamed over the
// name only once everything reached the disk. Anything else at the name (a
// device, a FIFO, /dev/stdout) is written in place. On failure errno tells why.
class QVROutputFile {
public:
    explicit QVROutputFile(const std::string& path);
    QVROutputFile(const QVROutputFile&) = delete;
    QVROutputFile& operator=(const QVROutputFile&) = delete;
    // Removes a temporary file that was not committed.
    ~QVROutputFile();

    // False (errno set) when no temporary file could be made.
    bool Open();
    // The path to write the document to: the temporary file, or the name itself.
    const std::string& WritePath() const { return m_writePath; }
    // Writes the bytes after those of earlier calls, the first call truncating
    // WritePath; the file stays open until Commit. False with errno on failure.
    bool Append(const char* data, std::size_t size);
    // Makes the written document durable and gives it its name. False with
    // errno when that fails; the name then still holds what it held before.
    bool Commit();

private:
    std::string m_path;
    std::string m_writePath;
    bool m_temporary;
    bool m_committed;
    int m_appendFd;  // open between the first Append and Commit
};

// Flushes standard output and tells whether everything written to it so far
// arrived; errno is set when not.
bool QVRFlushStandardOutput();

#endif
