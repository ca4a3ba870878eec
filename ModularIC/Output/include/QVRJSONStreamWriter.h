#ifndef QVRJSONSTREAMWRITER_H
#define QVRJSONSTREAMWRITER_H

#include <string>
#include <vector>

#include "QVROutputSink.h"

// Writes one JSON document member by member, the bytes leaving as they are
// known, laid out as cJSON's formatted printer lays out the same tree: a tab a
// level, "key":<tab>value, members on their own lines, array elements joined
// by ", ", an empty object as "{", a newline and the closing brace. Values
// are strings only. The document ends with one newline. Used from one thread.
class QVRJSONStreamWriter {
public:
    // path empty: standard output.
    explicit QVRJSONStreamWriter(const std::string& path);
    QVRJSONStreamWriter(const QVRJSONStreamWriter&) = delete;
    QVRJSONStreamWriter& operator=(const QVRJSONStreamWriter&) = delete;

    // Opens the destination and the root object. False (errno set) when the
    // destination cannot be had; nothing is written then.
    bool StartDocument();
    // An object or array as a member of the innermost open object (name given)
    // or as the next element of the innermost open array (name null).
    void StartObject(const char* name);
    void StartArray(const char* name);
    // A string member of the innermost open object.
    void AddString(const char* name, const std::string& value);
    // Closes the innermost open object or array.
    void End();
    // Closes what is open, writes the final newline and completes the
    // document (a file takes its name only now). False with errno on failure.
    bool Finish();

    bool IsStarted() const { return m_started; }

private:
    struct Level {
        bool array;
        bool empty;
    };
    void BeginValue(const char* name);
    void Tabs(std::size_t count);
    void PutString(const char* text);

    QVROutputSink m_sink;
    std::vector<Level> m_levels;
    bool m_started;
    bool m_finished;
    int m_error;         // why the destination could not be opened
    std::string m_line;  // scratch
};

#endif
