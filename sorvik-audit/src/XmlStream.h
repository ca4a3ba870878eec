#pragma once
// A streaming (SAX) parse of one XML document held in memory, with the
// collector's safety: no entity substitution, no DTD or network loads, no
// huge-document limits lifted, and nothing printed.
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace audit {

using XmlAttributes = std::vector<std::pair<std::string, std::string>>;

// Receives the elements in document order; depth 0 is the root. Returning
// false stops the parse; error then says what was wrong, and the parse puts
// the place in front of it.
class XmlHandler {
public:
    virtual ~XmlHandler() = default;
    virtual bool Start(int depth, const std::string& name, const XmlAttributes& attributes,
                       std::string& error) = 0;
    virtual bool End(int depth, const std::string& name, std::string& error) = 0;
    virtual void Text(const char*, size_t) {}
};

// One XML document fed in UTF-8 pieces as they arrive; nothing of it is held
// beyond libxml2's own buffers.
class XmlPushParser {
public:
    // ignoreEncoding: the bytes are UTF-8 whatever the declaration says (the
    // reader converted them).
    XmlPushParser(const std::string& name, int firstLine, XmlHandler& handler, bool ignoreEncoding);
    ~XmlPushParser();
    XmlPushParser(const XmlPushParser&) = delete;
    XmlPushParser& operator=(const XmlPushParser&) = delete;

    // last ends the document. False at the first fault, with error reading
    // "<name>:<line>:<column>: <what>"; later calls do nothing.
    bool Feed(const char* data, size_t size, bool last, std::string& error);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// Little-endian UTF-16 (behind its byte-order mark) to UTF-8, piece by piece:
// a code unit or surrogate pair may straddle two pieces. libxml2 2.9's push
// parser loses a UTF-16 encoding it detects itself, so the reader converts.
class Utf16Decoder {
public:
    // Appends the UTF-8 of the piece to out. False on broken UTF-16, with the
    // offset of the bad unit counted from the first piece.
    bool Decode(const char* data, size_t size, bool last, std::string& out, size_t& badByte);

private:
    std::string m_carry;
    size_t m_offset = 0;
};

// Parses size bytes (UTF-8, or UTF-16 behind a byte-order mark). On failure:
// false, and error reads "<name>:<line>:<column>: <what>", line counted from
// firstLine + 1.
bool ParseXml(const char* data, size_t size, const std::string& name, int firstLine, XmlHandler& handler,
              std::string& error);

}  // namespace audit
