#ifndef QVRXMLOUTPUTSTREAM_H
#define QVRXMLOUTPUTSTREAM_H

#include <string>

#include "IQVROutputStream.h"

class QVRArgumentList;
class QVRXMLStreamWriter;
class QVRXMLWriter;

// Writes the inventory document to the output file (-outc) or standard output
// while banner and content produce it, and holds the error document until
// Write saves it to the error file (-logc) or standard output.
class QVRXMLOutputStream : public IQVROutputStream {
public:
    // Reads -logc, -outc and -enc from the argument list (null: none given) and
    // creates both document writers; nothing is opened yet.
    explicit QVRXMLOutputStream(QVRArgumentList* arguments);
    QVRXMLOutputStream(const QVRXMLOutputStream&) = delete;
    QVRXMLOutputStream& operator=(const QVRXMLOutputStream&) = delete;
    ~QVRXMLOutputStream() override;

    // Completes the inventory document; then saves the error document if it
    // has entries. Standard output is always UTF-8; a file takes -enc, UTF-16
    // without it. False (errno of the first failure) when either failed.
    bool Write() override;

    // False when a writer could not be allocated.
    bool IsReady() const { return m_pDocWriter != nullptr && m_pErrorWriter != nullptr; }

    QVRXMLStreamWriter* GetDocumentWriter() const { return m_pDocWriter; }
    QVRXMLWriter* GetErrorWriter() const { return m_pErrorWriter; }
    void SetErrorDocumentPresent(bool present) { m_bErrorDocPresent = present; }
    bool IsErrorDocumentPresent() const { return m_bErrorDocPresent; }

    // The encoding rule: "UTF-8" for standard output (empty path) whatever the
    // encoding option says; else the option's value, "UTF-16" when empty.
    static std::string ChooseEncoding(const std::string& path, const std::string& encoding);

private:
    QVRXMLStreamWriter* m_pDocWriter;  // owned
    QVRXMLWriter* m_pErrorWriter;      // owned
    bool m_bErrorFile;
    std::string m_errorFilePath;
    bool m_bOutputFile;
    std::string m_outputFilePath;
    std::string m_encoding;
    bool m_bErrorDocPresent;
};

#endif
