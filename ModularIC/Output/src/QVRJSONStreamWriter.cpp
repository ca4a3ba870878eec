#include "QVRJSONStreamWriter.h"

#include <cerrno>
#include <cstdio>

QVRJSONStreamWriter::QVRJSONStreamWriter(const std::string& path)
    : m_sink(path), m_started(false), m_finished(false), m_error(0) {}

bool QVRJSONStreamWriter::StartDocument() {
    if (m_started || m_finished) return false;
    if (!m_sink.Open()) {
        m_error = errno != 0 ? errno : EIO;
        m_finished = true;
        return false;
    }
    m_started = true;
    m_sink.Write("{", 1);
    m_levels.push_back(Level{false, true});
    return true;
}

void QVRJSONStreamWriter::Tabs(std::size_t count) {
    static const char tabs[] = "\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
    while (count > 0) {
        const std::size_t now = count < sizeof(tabs) - 1 ? count : sizeof(tabs) - 1;
        m_sink.Write(tabs, now);
        count -= now;
    }
}

void QVRJSONStreamWriter::PutString(const char* text) {
    // Quotes, backslash and the control characters are escaped; every other
    // byte, DEL and non-ASCII included, is written as it is.
    std::string& out = m_line;
    out.assign(1, '"');
    for (const unsigned char* c = reinterpret_cast<const unsigned char*>(text); *c != '\0'; ++c) {
        switch (*c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (*c < 0x20) {
                    char escape[8];
                    std::snprintf(escape, sizeof(escape), "\\u%04x", *c);
                    out += escape;
                } else {
                    out += static_cast<char>(*c);
                }
        }
    }
    out += '"';
    m_sink.Write(out);
}

void QVRJSONStreamWriter::BeginValue(const char* name) {
    Level& parent = m_levels.back();
    if (parent.array) {
        if (!parent.empty) m_sink.Write(", ", 2);
    } else {
        m_sink.Write(parent.empty ? "\n" : ",\n", parent.empty ? 1 : 2);
        Tabs(m_levels.size());
        PutString(name != nullptr ? name : "");
        m_sink.Write(":\t", 2);
    }
    parent.empty = false;
}

void QVRJSONStreamWriter::StartObject(const char* name) {
    if (!m_started || m_levels.empty()) return;
    BeginValue(name);
    m_sink.Write("{", 1);
    m_levels.push_back(Level{false, true});
}

void QVRJSONStreamWriter::StartArray(const char* name) {
    if (!m_started || m_levels.empty()) return;
    BeginValue(name);
    m_sink.Write("[", 1);
    m_levels.push_back(Level{true, true});
}

void QVRJSONStreamWriter::AddString(const char* name, const std::string& value) {
    if (!m_started || m_levels.empty() || m_levels.back().array) return;
    BeginValue(name);
    PutString(value.c_str());
}

void QVRJSONStreamWriter::End() {
    if (!m_started || m_levels.empty()) return;
    const Level level = m_levels.back();
    m_levels.pop_back();
    if (level.array) {
        m_sink.Write("]", 1);
        return;
    }
    m_sink.Write("\n", 1);
    Tabs(m_levels.size());
    m_sink.Write("}", 1);
}

bool QVRJSONStreamWriter::Finish() {
    if (!m_started) {
        errno = m_error != 0 ? m_error : EIO;
        return false;
    }
    while (!m_levels.empty()) End();
    m_sink.Write("\n", 1);
    m_started = false;
    m_finished = true;
    return m_sink.Close();
}
