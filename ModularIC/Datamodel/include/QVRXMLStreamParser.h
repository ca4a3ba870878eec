#ifndef QVRXMLSTREAMPARSER_H
#define QVRXMLSTREAMPARSER_H

#include <libxml/tree.h>

#include <cstddef>

// Parses one document with the same safety and the same verdict as
// QVRXMLParser, but never holds more than one child of the root in memory: each
// child of the root (an element with its whole subtree, or a text, comment,
// processing instruction...) is handed to the handler, in document order, as
// soon as it is complete, and freed right after. Peak memory is that of the
// largest child, not of the document.
//
// The handler's calls happen before the verdict: a document that turns out not
// to be well-formed has still had its earlier children delivered, so a caller
// keeps what it builds aside until Parse returns.
class QVRXMLStreamParser {
public:
    class Handler {
    public:
        virtual ~Handler() = default;
        // The root element has started; its attributes are there, its children not yet.
        virtual void OnRoot(xmlNodePtr root) = 0;
        // One complete child of the root; valid only during the call. Returning
        // false stops the parse (Parse then answers kStopped).
        virtual bool OnRootChild(xmlNodePtr child) = 0;
    };

    enum Result { kWellFormed, kNotWellFormed, kStopped };

    // What the entity references of a document may add to its values: no more
    // than kMaxValueBytes to one value, no more than kMaxExpansionFactor times
    // the document plus kExpansionAllowance to all of them. A module reports
    // versions and names; a document past either is refused as not
    // well-formed, so reading any document costs time linear in its size.
    static constexpr std::size_t kMaxValueBytes = 1u << 20;
    static constexpr std::size_t kMaxExpansionFactor = 2;
    static constexpr std::size_t kExpansionAllowance = 1u << 20;

    // Reads text up to its first NUL byte (or length bytes). Text longer than
    // libxml2 can address, or whose values expand beyond the limits above, is
    // not well-formed.
    static Result Parse(const char* text, std::size_t length, Handler& handler);
};

#endif
