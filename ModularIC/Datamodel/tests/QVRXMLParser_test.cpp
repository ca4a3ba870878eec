#include "QVRXMLParser.h"

#include <gtest/gtest.h>

#include <new>

#include "QVRXMLStreamParser.h"

namespace {

struct Collect : QVRXMLStreamParser::Handler {
    size_t delivered = 0;
    size_t throwAt = 0;  // the child (counted from 1) whose delivery throws
    size_t stopAt = 0;   // the child whose delivery answers false
    void OnRoot(xmlNodePtr) override {}
    bool OnRootChild(xmlNodePtr) override {
        if (++delivered == throwAt) throw std::bad_alloc();
        return delivered != stopAt;
    }
};

QVRXMLStreamParser::Result Stream(const std::string& text, Collect& handler) {
    return QVRXMLStreamParser::Parse(text.data(), text.size(), handler);
}

// A throw from the handler must not unwind through libxml2: it comes out of
// Parse once the parser is done, with nothing leaked (the sanitizer build checks).
TEST(QVRXMLStreamParser, AHandlerThatThrowsOrRefusesStopsTheParse) {
    Collect stopper;
    stopper.stopAt = 2;
    EXPECT_EQ(Stream("<R><A/><B/><C/></R>", stopper), QVRXMLStreamParser::kStopped);
    EXPECT_EQ(stopper.delivered, 2u);
    for (size_t at : {1u, 2u, 3u}) {
        Collect thrower;
        thrower.throwAt = at;
        EXPECT_THROW(Stream("<R><A><x/></A><B/><C>text</C></R>", thrower), std::bad_alloc);
        EXPECT_EQ(thrower.delivered, at);
    }
}

TEST(QVRXMLStreamParser, VerdictIsTheWholeDocumentParsersOnTrickyInputs) {
    // clang-format off
    const std::vector<std::string> corpus = {
        "<a/>", "<a>", "<a></b>", "<a/><b/>", "<a/>trailing", "<a/><!--ok-->", "text only", "",
        "<a x='1' x='2'/>", "<a x=1/>", "<a>&undefined;</a>", "<a>&amp;&lt;&#x41;&#0;</a>", "<p:a/>",
        "<a xmlns:p=''/>", "<p:a xmlns:p='urn:x'><q:b/></p:a>", "<?xml version='2.0'?><a/>",
        "<?xml version='1.0' encoding='bogus'?><a/>", "<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a>",
        "<!DOCTYPE a [<!ENTITY e SYSTEM 'x'>]><a>&e;</a>", "<a><![CDATA[x]]></a>", "<a><![CDATA[x</a>",
        "\xEF\xBB\xBF<a/>", "<a>\x01</a>", "<a>\xC3\x28</a>", "<a b='<'/>", "<a>]]></a>", "<a/ >", "< a/>",
        "<a></a >",
        "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>", "<!DOCTYPE a [<!ENTITY e '<b>'>]><a>&e;</a>",
        std::string("<r/>\0<<garbage", 14), std::string("<r>\0</r>", 8)};
    // clang-format on
    for (const std::string& text : corpus) {
        Collect handler;
        const bool streamed = Stream(text, handler) == QVRXMLStreamParser::kWellFormed;
        EXPECT_EQ(streamed, !QVRXMLParser(text).IsParsingError()) << text;
    }
}

}  // namespace
