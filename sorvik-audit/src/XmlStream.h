#pragma once
// A streaming (SAX) parse of one XML document held in memory, with the
// collector's safety: no entity substitution, no DTD or network loads, no
// huge-document limits lifted, and nothing printed.
#include <cstddef>
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

// Parses size bytes (UTF-8, or UTF-16 behind a byte-order mark). On failure:
// false, and error reads "<name>:<line>:<column>: <what>", line counted from
// firstLine + 1.
bool ParseXml(const char* data, size_t size, const std::string& name, int firstLine, XmlHandler& handler,
              std::string& error);

}  // namespace audit
