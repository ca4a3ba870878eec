#ifndef QVRJSONOUTPUTSTREAM_H
#define QVRJSONOUTPUTSTREAM_H

#include <string>

#include "IQVROutputStream.h"

class QVRArgumentList;
class QVRJSONStreamWriter;

// Writes the JSON document to the output file (-outc) or to standard output
// while the content produces it, always as UTF-8.
class QVRJSONOutputStream : public IQVROutputStream {
public:
    // Reads -outc (null argument list: none given); creates the writer.
    explicit QVRJSONOutputStream(QVRArgumentList* arguments);
    QVRJSONOutputStream(const QVRJSONOutputStream&) = delete;
    QVRJSONOutputStream& operator=(const QVRJSONOutputStream&) = delete;
    ~QVRJSONOutputStream() override;

    bool Write() override;

    // False when the writer or its root could not be allocated.
    bool IsReady() const;
    QVRJSONStreamWriter* GetWriter() const { return m_pWriter; }

private:
    QVRJSONStreamWriter* m_pWriter;  // owned
    bool m_bOutputFile;
    std::string m_outputFilePath;
};

#endif
