#include "QVROutputSink.h"

#include <cerrno>
#include <cstdio>

#include "QVROutputFile.h"

namespace {
// Large enough that a document costs few system calls.
const std::size_t kFlushSize = 256 * 1024;
}  // namespace

QVROutputSink::QVROutputSink(const std::string& path) : m_path(path), m_error(0), m_open(false) {}

QVROutputSink::~QVROutputSink() = default;

void QVROutputSink::Fail(int error) {
    if (m_error == 0) m_error = error != 0 ? error : EIO;
}

bool QVROutputSink::Open() {
    m_open = true;
    if (m_path.empty()) return true;
    m_file.reset(new QVROutputFile(m_path));
    if (m_file->Open()) return true;
    Fail(errno);
    return false;
}

bool QVROutputSink::Write(const char* data, std::size_t size) {
    if (m_error != 0) return false;
    if (!m_open) {
        Fail(EBADF);
        return false;
    }
    m_buffer.append(data, size);
    return m_buffer.size() < kFlushSize || Flush();
}

bool QVROutputSink::Flush() {
    if (m_error != 0) return false;
    if (m_buffer.empty()) return true;
    errno = 0;
    const bool written = m_file != nullptr
                             ? m_file->Append(m_buffer.data(), m_buffer.size())
                             : std::fwrite(m_buffer.data(), 1, m_buffer.size(), stdout) == m_buffer.size();
    m_buffer.clear();
    if (!written) Fail(errno);
    return written;
}

bool QVROutputSink::Close() {
    if (!m_open) Fail(EBADF);
    Flush();
    if (m_error == 0) {
        errno = 0;
        const bool done = m_file != nullptr ? m_file->Commit() : QVRFlushStandardOutput();
        if (!done) Fail(errno);
    }
    m_open = false;
    errno = m_error;
    return m_error == 0;
}
