#ifndef QVRJSONOUTPUTSTREAM_H
#define QVRJSONOUTPUTSTREAM_H

#include <string>

#include "IQVROutputStream.h"

class QVRArgumentList;
class QVRJSONWriter;

// Holds the JSON document and prints it to the output file (-outc) or to
// standard output, always as the UTF-8 that cJSON prints.
class QVRJSONOutputStream : public IQVROutputStream {
public:
    // Reads -outc (null argument list: none given); creates and initialises the writer.
    explicit QVRJSONOutputStream(QVRArgumentList* arguments);
    QVRJSONOutputStream(const QVRJSONOutputStream&) = delete;
    QVRJSONOutputStream& operator=(const QVRJSONOutputStream&) = delete;
    ~QVRJSONOutputStream() override;

    bool Write() override;

    // False when the writer or its root could not be allocated.
    bool IsReady() const;
    QVRJSONWriter* GetWriter() const { return m_pWriter; }

private:
    QVRJSONWriter* m_pWriter;  // owned
    bool m_bOutputFile;
    std::string m_outputFilePath;
};

#endif
