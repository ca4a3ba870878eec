#ifndef QVRXMLOUTPUTSTREAM_H
#define QVRXMLOUTPUTSTREAM_H

#include <string>

#include "IQVROutputStream.h"

class QVRArgumentList;
class QVRXMLWriter;

// Holds the inventory document and the error document and saves them to the
// output file (-outc) and the error file (-logc), or to standard output.
class QVRXMLOutputStream : public IQVROutputStream {
public:
    // Reads -logc, -outc and -enc from the argument list (null: none given) and
    // creates both document writers.
    explicit QVRXMLOutputStream(QVRArgumentList* arguments);
    QVRXMLOutputStream(const QVRXMLOutputStream&) = delete;
    QVRXMLOutputStream& operator=(const QVRXMLOutputStream&) = delete;
    ~QVRXMLOutputStream() override;

    // Saves the inventory document; then the error document if it has entries.
    // Standard output is always UTF-8; a file takes -enc, UTF-16 without it.
    bool Write() override;

    // False when a writer could not be allocated.
    bool IsReady() const { return m_pDocWriter != nullptr && m_pErrorWriter != nullptr; }

    QVRXMLWriter* GetDocumentWriter() const { return m_pDocWriter; }
    QVRXMLWriter* GetErrorWriter() const { return m_pErrorWriter; }
    void SetErrorDocumentPresent(bool present) { m_bErrorDocPresent = present; }
    bool IsErrorDocumentPresent() const { return m_bErrorDocPresent; }

    // The encoding rule: "UTF-8" for standard output (empty path) whatever the
    // encoding option says; else the option's value, "UTF-16" when empty.
    static std::string ChooseEncoding(const std::string& path, const std::string& encoding);

private:
    QVRXMLWriter* m_pDocWriter;    // owned
    QVRXMLWriter* m_pErrorWriter;  // owned
    bool m_bErrorFile;
    std::string m_errorFilePath;
    bool m_bOutputFile;
    std::string m_outputFilePath;
    std::string m_encoding;
    bool m_bErrorDocPresent;
};

#endif
