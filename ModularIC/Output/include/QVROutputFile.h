#ifndef QVROUTPUTFILE_H
#define QVROUTPUTFILE_H

#include <cstddef>
#include <string>

// Where one output document is written so that a failed write never leaves a
// truncated document under its final name: a regular file (or a new one) is
// written as a temporary file in the same directory and renamed over the
// name only once everything reached the disk. A symbolic link is written
// through: the file its links lead to is replaced that way, in that file's
// directory, and the link stays. The replacement keeps an existing file's
// owner, group and mode; a new file gets the mode the umask leaves. Anything
// else at the name (a device, a FIFO, /dev/stdout) is written in place. The
// name is used exactly as given. On failure errno tells why.
class QVROutputFile {
public:
    explicit QVROutputFile(const std::string& path);
    QVROutputFile(const QVROutputFile&) = delete;
    QVROutputFile& operator=(const QVROutputFile&) = delete;
    // Removes a temporary file that was not committed.
    ~QVROutputFile();

    // False (errno set) when no temporary file could be made, or the name is a
    // link that leads to nothing (ENOENT).
    bool Open();
    // Writes the bytes after those of earlier calls, the first call truncating
    // a file written in place. False with errno on failure.
    bool Append(const char* data, std::size_t size);
    // Makes the written document durable and gives it its name. False with
    // errno when that fails; the name then still holds what it held before.
    bool Commit();

private:
    std::string m_path;       // as the user gave it
    std::string m_target;     // the file that takes the document: m_path or where its links lead
    std::string m_writePath;  // the temporary file, or m_path written in place
    bool m_temporary;
    bool m_committed;
    int m_fd;  // the temporary file from Open, or the file in place from the first Append
};

// Flushes standard output and tells whether everything written to it so far
// arrived; errno is set when not.
bool QVRFlushStandardOutput();

#endif
