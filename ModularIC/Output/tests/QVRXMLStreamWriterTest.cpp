#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>

#include "OutputTestSupport.h"
#include "QVRXMLStreamWriter.h"
#include "QVRXMLWriter.h"

using namespace outtest;

namespace {

// The same element tree through the tree writer (saved by libxml2) and the
// stream writer: a chain `depth` deep, each element with attributes carrying
// the value, and a sibling after the chain.
void BuildBoth(QVRXMLWriter& tree, QVRXMLStreamWriter& stream, int depth, const std::string& value) {
    tree.AddHeader("1.0");
    xmlNodePtr node = tree.AddRootNode("r");
    stream.StartDocument("1.0");
    stream.StartElement("r");
    for (int level = 1; level <= depth; ++level) {
        node = tree.AddNewChildNode(node, "e");
        tree.AddNodePropertyWithValue(node, "a", value);
        tree.AddNodePropertyWithValue(node, "n", std::to_string(level));
        stream.StartElement("e");
        stream.AddAttribute("a", value);
        stream.AddAttribute("n", std::to_string(level));
    }
    for (int level = 1; level <= depth; ++level) stream.EndElement();
    tree.AddNewChildNode(tree.GetRootNode(), "last");
    stream.StartElement("last");
}

TEST(QVRXMLStreamWriter, WritesWhatLibxml2SavesForTheSameTree) {
    const struct {
        int depth;
        std::string value, encoding;
    } rows[] = {
        {0, "", "UTF-8"},
        {1, "plain", "UTF-16"},
        {3, "<&>\"'\t\n\r \x01 caf\xC3\xA9 \xF0\x9F\x98\x80", "UTF-8"},
        {3, "<&>\"'\t\n\r \x01 caf\xC3\xA9 \xF0\x9F\x98\x80", "UTF-16"},
        {45, "deeper than libxml2 indents", "UTF-8"},
        {2, std::string("cut at\0 the NUL", 15), "UTF-8"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.depth) + " " + row.encoding);
        TempDir dir;
        QVRXMLWriter tree;
        QVRXMLStreamWriter stream(dir.Path("stream.xml"), row.encoding);
        BuildBoth(tree, stream, row.depth, row.value);
        ASSERT_TRUE(tree.Write(dir.Path("tree.xml"), row.encoding));
        ASSERT_TRUE(stream.Finish());
        EXPECT_EQ(ReadFile(dir.Path("tree.xml")), ReadFile(dir.Path("stream.xml")));
    }
}

// A document that cannot be written whole fails with the reason, and a file
// at the name keeps what it held.
TEST(QVRXMLStreamWriter, AFailedDocumentFailsWithTheReasonAndLeavesTheNameAlone) {
    const struct {
        const char *name, *path, *encoding;
        int error;
    } rows[] = {
        {"missing directory", "missing/out.xml", "UTF-8", ENOENT},
        {"no encoder for the name", "out.xml", "NO-SUCH-ENCODING", 0},
        {"device that is full", "/dev/full", "UTF-16", ENOSPC},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        const std::string path = row.path[0] == '/' ? row.path : dir.Path(row.path);
        if (row.path[0] != '/' && row.error == 0) std::ofstream(path) << "old";
        {
            QVRXMLStreamWriter stream(path, row.encoding);
            stream.StartDocument("1.0");
            stream.StartElement("r");
            for (int i = 0; i < 20000; ++i) {  // more than every buffer holds
                stream.StartElement("e");
                stream.AddAttribute("a", "value");
                stream.EndElement();
            }
            errno = 0;
            EXPECT_FALSE(stream.Finish());
            if (row.error != 0) {
                EXPECT_EQ(row.error, errno);
            }
            EXPECT_NE(0, errno);
        }
        if (row.path[0] != '/') {
            EXPECT_EQ(row.error == 0 ? "old" : "", ReadFile(path));
            EXPECT_EQ(row.error == 0, FileExists(path));
        }
    }
}

TEST(QVRXMLStreamWriter, ADocumentNeverStartedIsAFailure) {
    TempDir dir;
    QVRXMLStreamWriter stream(dir.Path("out.xml"), "UTF-8");
    EXPECT_FALSE(stream.Finish());
    EXPECT_FALSE(FileExists(dir.Path("out.xml")));
}

}  // namespace
