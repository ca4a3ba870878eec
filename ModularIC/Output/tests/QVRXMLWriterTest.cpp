#include <gtest/gtest.h>

#include "OutputTestSupport.h"
#include "QVRXMLWriter.h"

using namespace outtest;

namespace {

const char* const kSimpleUtf8 =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<root a=\"1\" b=\"two\">\n"
    "  <child/>\n"
    "  <text>hello</text>\n"
    "</root>\n";

void BuildSimple(QVRXMLWriter& writer) {
    ASSERT_TRUE(writer.AddHeader("1.0"));
    xmlNodePtr root = writer.AddRootNode("root");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root, writer.GetRootNode());
    EXPECT_NE(writer.AddNodePropertyWithValue(root, "a", "1"), nullptr);
    EXPECT_NE(writer.AddNodePropertyWithValue(root, "b", std::string("two")), nullptr);
    EXPECT_NE(writer.AddNewChildNode(root, "child"), nullptr);
    EXPECT_NE(writer.AddNewChildNodeText(root, "text", "hello"), nullptr);
}

}  // namespace

TEST(QVRXMLWriter, SavesIndentedDocumentToFile) {
    TempDir dir;
    QVRXMLWriter writer;
    BuildSimple(writer);
    ASSERT_TRUE(writer.Write(dir.Path("a.xml"), "UTF-8"));
    EXPECT_EQ(ReadFile(dir.Path("a.xml")), kSimpleUtf8);
}

TEST(QVRXMLWriter, EmptyEncodingMeansUtf8) {
    TempDir dir;
    QVRXMLWriter writer;
    BuildSimple(writer);
    ASSERT_TRUE(writer.Write(dir.Path("a.xml"), ""));
    EXPECT_EQ(ReadFile(dir.Path("a.xml")), kSimpleUtf8);
}

TEST(QVRXMLWriter, EmptyPathMeansStandardOutput) {
    QVRXMLWriter writer;
    BuildSimple(writer);
    StdoutCapture capture;
    EXPECT_TRUE(writer.Write("", ""));
    EXPECT_EQ(capture.Finish(), kSimpleUtf8);
}

TEST(QVRXMLWriter, Utf16IsLittleEndianBehindByteOrderMark) {
    TempDir dir;
    QVRXMLWriter writer;
    BuildSimple(writer);
    ASSERT_TRUE(writer.Write(dir.Path("a.xml"), "UTF-16"));
    std::string expected = kSimpleUtf8;
    expected.replace(expected.find("UTF-8"), 5, "UTF-16");
    const std::string bytes = ReadFile(dir.Path("a.xml"));
    ASSERT_GE(bytes.size(), 2u);
    EXPECT_EQ(static_cast<unsigned char>(bytes[0]), 0xFF);
    EXPECT_EQ(static_cast<unsigned char>(bytes[1]), 0xFE);
    EXPECT_EQ(bytes, Utf16LeWithBom(expected));
}

TEST(QVRXMLWriter, ReplacesExistingFile) {
    TempDir dir;
    WriteFile(dir.Path("a.xml"), std::string(4096, 'x'));
    QVRXMLWriter writer;
    BuildSimple(writer);
    ASSERT_TRUE(writer.Write(dir.Path("a.xml"), "UTF-8"));
    EXPECT_EQ(ReadFile(dir.Path("a.xml")), kSimpleUtf8);
}

TEST(QVRXMLWriter, EscapesMarkupInAttributesAndText) {
    TempDir dir;
    QVRXMLWriter writer;
    writer.AddHeader(std::string("1.0"));
    xmlNodePtr root = writer.AddRootNode(std::string("r"));
    writer.AddNodePropertyWithValue(root, "v", "a<b & \"c\"");
    writer.AddNewChildNodeText(root, std::string("m"), std::string("x < y & z"));
    ASSERT_TRUE(writer.Write(dir.Path("e.xml"), "UTF-8"));
    EXPECT_EQ(ReadFile(dir.Path("e.xml")),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<r v=\"a&lt;b &amp; &quot;c&quot;\">\n"
              "  <m>x &lt; y &amp; z</m>\n"
              "</r>\n");
}

TEST(QVRXMLWriter, NothingIsSavedWithoutDocument) {
    TempDir dir;
    QVRXMLWriter writer;
    EXPECT_EQ(writer.AddRootNode("r"), nullptr);
    EXPECT_FALSE(writer.Write(dir.Path("none.xml"), "UTF-8"));
    EXPECT_FALSE(FileExists(dir.Path("none.xml")));
}

TEST(QVRXMLWriter, NullParentsAreDeclinedWithoutLeaking) {
    QVRXMLWriter writer;
    writer.AddHeader("1.0");
    EXPECT_EQ(writer.AddNewChildNode(nullptr, "x"), nullptr);
    EXPECT_EQ(writer.AddNewChildNodeText(nullptr, "x", "t"), nullptr);
    EXPECT_EQ(writer.AddNodePropertyWithValue(nullptr, "a", "b"), nullptr);
    EXPECT_EQ(writer.AddChildNode(nullptr, xmlNewNode(nullptr, BAD_CAST "orphan")), nullptr);
}

TEST(QVRXMLWriter, AddChildNodeAttachesBuiltNode) {
    QVRXMLWriter writer;
    writer.AddHeader("1.0");
    xmlNodePtr root = writer.AddRootNode("r");
    xmlNodePtr built = xmlNewNode(nullptr, BAD_CAST "built");
    EXPECT_EQ(writer.AddChildNode(root, built), built);
    EXPECT_EQ(writer.RawXMLDumpNode(root), "<r>\n  <built/>\n</r>");
}

TEST(QVRXMLWriter, RawDumpIsEmptyWithoutDocumentOrNode) {
    QVRXMLWriter writer;
    EXPECT_EQ(writer.RawXMLDumpNode(nullptr), "");
    writer.AddHeader("1.0");
    EXPECT_EQ(writer.RawXMLDumpNode(nullptr), "");
    xmlNodePtr root = writer.AddRootNode("r");
    writer.AddNodePropertyWithValue(root, "k", "v");
    EXPECT_EQ(writer.RawXMLDumpNode(root), "<r k=\"v\"/>");
}

TEST(QVRXMLWriter, NewHeaderStartsAFreshDocument) {
    TempDir dir;
    QVRXMLWriter writer;
    writer.AddHeader("1.0");
    writer.AddNewChildNode(writer.AddRootNode("old"), "gone");
    writer.AddHeader("1.0");
    EXPECT_EQ(writer.GetRootNode(), nullptr);
    writer.AddRootNode("new");
    writer.AddRootNode("newer");  // the replaced root is freed
    ASSERT_TRUE(writer.Write(dir.Path("n.xml"), "UTF-8"));
    EXPECT_EQ(ReadFile(dir.Path("n.xml")), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<newer/>\n");
}
