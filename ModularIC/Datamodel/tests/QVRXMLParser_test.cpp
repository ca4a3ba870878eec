#include "QVRXMLParser.h"

#include <gtest/gtest.h>
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "DatamodelTestSupport.h"
#include "QVRXMLErrorSilencer.h"
#include "QVRXMLStreamParser.h"

namespace {

TEST(QVRXMLParser, ReadsRootChildrenNamesAndAttributes) {
    QVRXMLParser parser("<SVMInventory a=\"1\"><Device x=\"&lt;b&gt;\"/></SVMInventory>");
    ASSERT_FALSE(parser.IsParsingError());
    xmlNodePtr root = parser.GetRootNode();
    EXPECT_EQ(parser.GetNodeName(root), "SVMInventory");
    EXPECT_EQ(parser.GetNodeProp(root, "a"), "1");
    EXPECT_EQ(parser.GetNodeProp(root, "missing"), "");
    xmlNodePtr child = parser.GetChildNode(root);
    EXPECT_EQ(parser.GetNodeName(child), "Device");
    EXPECT_EQ(parser.GetNodeProp(child, "x"), "<b>");
    EXPECT_EQ(parser.GetChildNode(child), nullptr);
    EXPECT_EQ(parser.GetNodeName(nullptr), "");
    EXPECT_EQ(parser.GetChildNode(nullptr), nullptr);
}

TEST(QVRXMLParser, NodeListStringReplacesEntities) {
    QVRXMLParser parser(
        "<!DOCTYPE r [<!ENTITY who \"the module\">]><r><Message>a &amp; b, &who;, &#65;</Message></r>");
    ASSERT_FALSE(parser.IsParsingError());
    xmlNodePtr message = parser.GetChildNode(parser.GetRootNode());
    EXPECT_EQ(parser.GetNodeListString(message), "a & b, the module, A");
}

TEST(QVRXMLParser, RawXMLDumpNodeSerialisesTheNode) {
    QVRXMLParser parser("<r><Device a=\"1\"><Application b=\"2\"/></Device></r>");
    const std::string dump = parser.RawXMLDumpNode(parser.GetChildNode(parser.GetRootNode()));
    EXPECT_EQ(dump, "<Device a=\"1\">\n  <Application b=\"2\"/>\n</Device>");
    EXPECT_EQ(parser.RawXMLDumpNode(nullptr), "");
}

TEST(QVRXMLParser, MalformedTextIsAParsingErrorAndPrintsNothing) {
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    QVRXMLParser parser("<SVMInventory><Device></SVMInventory>");
    QVRXMLParser empty("");
    const std::string err = ::testing::internal::GetCapturedStderr();
    const std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_TRUE(parser.IsParsingError());
    EXPECT_TRUE(empty.IsParsingError());
    EXPECT_EQ(parser.GetRootNode(), nullptr);
    EXPECT_EQ(parser.GetNodeName(nullptr), "");
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, "");
}

TEST(QVRXMLParser, TextEndsAtTheFirstNulByte) {
    const std::string withNul("<r/>\0<<garbage", 14);
    QVRXMLParser parser(withNul);
    EXPECT_FALSE(parser.IsParsingError());
    const std::string cut("<r>\0</r>", 8);
    QVRXMLParser broken(cut);
    EXPECT_TRUE(broken.IsParsingError());
}

TEST(QVRXMLErrorSilencer, RestoresThePreviousHandlers) {
    xmlGenericErrorFunc before = xmlGenericError;
    xmlStructuredErrorFunc structuredBefore = xmlStructuredError;
    {
        QVRXMLErrorSilencer silence;
        EXPECT_NE(xmlGenericError, before);
    }
    EXPECT_EQ(xmlGenericError, before);
    EXPECT_EQ(xmlStructuredError, structuredBefore);
}

TEST(QVRXMLErrorSilencer, AnotherParseOnThisThreadStillReportsAfterwards) {
    { QVRXMLParser parser("<broken"); }
    ::testing::internal::CaptureStderr();
    xmlDocPtr doc = xmlParseDoc(reinterpret_cast<const xmlChar*>("<broken"));
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(doc, nullptr);
    EXPECT_NE(err, "");  // the process's own handler is back in place
}

// ---- Safety ---------------------------------------------------------------

class ExternalEntityTest : public ::testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/qvrsecretXXXXXX";
        const int fd = mkstemp(name);
        ASSERT_NE(fd, -1);
        close(fd);
        path = name;
        std::ofstream(path) << "TOP-SECRET-CONTENT";
    }
    void TearDown() override { std::remove(path.c_str()); }
    std::string Document() const {
        return "<?xml version=\"1.0\"?>\n<!DOCTYPE SVMInventory [<!ENTITY ext SYSTEM \"file://" + path +
               "\">]>\n<SVMInventory><SPStatus "
               "result=\"false\"><Message>&ext;</Message></SPStatus></SVMInventory>";
    }
    std::string path;
};

TEST_F(ExternalEntityTest, IsNeverRead) {
    QVRXMLParser parser(Document());
    ASSERT_FALSE(parser.IsParsingError());
    xmlNodePtr status = parser.GetChildNode(parser.GetRootNode());
    xmlNodePtr message = parser.GetChildNode(status);
    EXPECT_EQ(parser.GetNodeListString(message).find("TOP-SECRET"), std::string::npos);
    EXPECT_EQ(parser.RawXMLDumpNode(parser.GetRootNode()).find("TOP-SECRET"), std::string::npos);
}

TEST_F(ExternalEntityTest, IsNeverReadEvenWhenTheProcessSwitchedLoadingOn) {
    const int substitute = xmlSubstituteEntitiesDefault(1);
    const int loadDefault = xmlLoadExtDtdDefaultValue;
    xmlLoadExtDtdDefaultValue = XML_DETECT_IDS | XML_COMPLETE_ATTRS;
    {
        QVRXMLParser parser(Document());
        ASSERT_FALSE(parser.IsParsingError());
        EXPECT_EQ(parser.RawXMLDumpNode(parser.GetRootNode()).find("TOP-SECRET"), std::string::npos);
        xmlNodePtr message = parser.GetChildNode(parser.GetChildNode(parser.GetRootNode()));
        EXPECT_EQ(parser.GetNodeListString(message).find("TOP-SECRET"), std::string::npos);
    }
    xmlSubstituteEntitiesDefault(substitute);
    xmlLoadExtDtdDefaultValue = loadDefault;
}

TEST_F(ExternalEntityTest, ExternalDTDIsNotLoaded) {
    std::ofstream(path) << "<!ENTITY leak \"TOP-SECRET-CONTENT\">";
    QVRXMLParser parser("<!DOCTYPE r SYSTEM \"file://" + path + "\"><r>&leak;</r>");
    // Without the DTD the entity is undeclared: either no document, or one
    // without the secret.
    if (!parser.IsParsingError()) {
        EXPECT_EQ(parser.GetNodeListString(parser.GetRootNode()).find("TOP-SECRET"), std::string::npos);
    }
}

TEST(QVRXMLParserSafety, EntityExpansionBombIsRefusedQuickly) {
    std::string doc = "<!DOCTYPE r [<!ENTITY a0 \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\">";
    for (int i = 1; i <= 12; ++i)
        doc += "<!ENTITY a" + std::to_string(i) + " \"" + [&] {
            std::string s;
            for (int k = 0; k < 10; ++k) s += "&a" + std::to_string(i - 1) + ";";
            return s;
        }() + "\">";
    doc += "]><r><Message>&a12;</Message><x a=\"&a12;\"/></r>";
    const auto start = std::chrono::steady_clock::now();
    QVRXMLParser parser(doc);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_TRUE(parser.IsParsingError());
    EXPECT_LT(seconds, 5.0);
}

TEST(QVRXMLParserSafety, DeepNestingIsRefused) {
    std::string doc;
    for (int i = 0; i < 100000; ++i) doc += "<a>";
    for (int i = 0; i < 100000; ++i) doc += "</a>";
    QVRXMLParser parser(doc);
    EXPECT_TRUE(parser.IsParsingError());
}

// ---- The stream parser -----------------------------------------------------

struct Collect : QVRXMLStreamParser::Handler {
    std::string root;
    std::vector<std::string> children;
    size_t stopAfter = 0;
    void OnRoot(xmlNodePtr node) override { root = QVRXMLParser::NodeName(node); }
    bool OnRootChild(xmlNodePtr child) override {
        std::string entry = QVRXMLParser::NodeName(child);
        if (child->type == XML_ELEMENT_NODE) entry += "/" + std::to_string(xmlChildElementCount(child));
        children.push_back(entry);
        return stopAfter == 0 || children.size() < stopAfter;
    }
};

QVRXMLStreamParser::Result Stream(const std::string& text, Collect& handler) {
    return QVRXMLStreamParser::Parse(text.data(), text.size(), handler);
}

TEST(QVRXMLStreamParser, DeliversEveryChildOfTheRootInOrderWithItsSubtree) {
    Collect handler;
    ASSERT_EQ(Stream("<?xml version=\"1.0\"?><R>\n <A><x/><y/></A><!--c--><B/>tail<?pi x?></R><!--after-->",
                     handler),
              QVRXMLStreamParser::kWellFormed);
    EXPECT_EQ(handler.root, "R");
    EXPECT_EQ(handler.children, (std::vector<std::string>{"text", "A/2", "comment", "B/0", "text", "pi"}));
}

TEST(QVRXMLStreamParser, VerdictOfALateErrorComesAfterTheEarlierChildren) {
    Collect handler;
    EXPECT_EQ(Stream("<R><A/><B/><C>", handler), QVRXMLStreamParser::kNotWellFormed);
    EXPECT_EQ(handler.children, (std::vector<std::string>{"A/0", "B/0"}));
}

TEST(QVRXMLStreamParser, HandlerCanStopTheParse) {
    Collect handler;
    handler.stopAfter = 2;
    EXPECT_EQ(Stream("<R><A/><B/><C/><D/></R>", handler), QVRXMLStreamParser::kStopped);
    EXPECT_EQ(handler.children.size(), 2u);
}

TEST(QVRXMLStreamParser, EmptyRootAndEmptyText) {
    Collect handler;
    EXPECT_EQ(Stream("<R/>", handler), QVRXMLStreamParser::kWellFormed);
    EXPECT_EQ(handler.root, "R");
    EXPECT_TRUE(handler.children.empty());
    Collect none;
    EXPECT_EQ(Stream("", none), QVRXMLStreamParser::kNotWellFormed);
    EXPECT_EQ(QVRXMLStreamParser::Parse(nullptr, 0, none), QVRXMLStreamParser::kNotWellFormed);
}

TEST(QVRXMLStreamParser, EntityContentIsNotMistakenForChildrenOfTheRoot) {
    Collect handler;
    ASSERT_EQ(Stream("<!DOCTYPE R [<!ENTITY e \"<A/><B/>\">]><R><C>&e;</C>&e;</R>", handler),
              QVRXMLStreamParser::kWellFormed);
    ASSERT_EQ(handler.children.size(), 2u);
    EXPECT_EQ(handler.children[0], "C/0");
    EXPECT_EQ(handler.children[1], "e");  // the entity reference itself
}

// The stream parser's verdict is the whole-document parser's, input by input.
class VerdictParityTest : public ::testing::TestWithParam<std::string> {};

TEST_P(VerdictParityTest, SameAsWholeDocumentParse) {
    Collect handler;
    const QVRXMLStreamParser::Result streamed = Stream(GetParam(), handler);
    QVRXMLParser whole(GetParam());
    EXPECT_EQ(streamed == QVRXMLStreamParser::kWellFormed, !whole.IsParsingError()) << GetParam();
}

INSTANTIATE_TEST_SUITE_P(Corpus, VerdictParityTest,
                         ::testing::Values("<a/>", "<a>", "<a></b>", "<a/><b/>", "<a/>trailing",
                                           "<a/><!--ok-->", "text only", "", "<a x='1' x='2'/>", "<a x=1/>",
                                           "<a>&undefined;</a>", "<a>&amp;&lt;&#x41;&#0;</a>", "<p:a/>",
                                           "<p:a xmlns:p='urn:x'><q:b/></p:a>", "<a xmlns:p=''/>",
                                           "<?xml version='1.0'?><a/>", "<?xml version='2.0'?><a/>",
                                           "<?xml version='1.0' encoding='bogus'?><a/>",
                                           "<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a>",
                                           "<!DOCTYPE a [<!ENTITY e SYSTEM 'x'>]><a>&e;</a>",
                                           "<a><![CDATA[x]]></a>", "<a><![CDATA[x</a>", "\xEF\xBB\xBF<a/>",
                                           "<a>\x01</a>", "<a>\xC3\x28</a>", "<a b='<'/>", "<a>]]></a>",
                                           "<a/ >", "< a/>", "<a></a >",
                                           "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>",
                                           "<!DOCTYPE a [<!ENTITY e '<b>'>]><a>&e;</a>"));

}  // namespace
