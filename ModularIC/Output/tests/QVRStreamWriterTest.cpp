#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <functional>

#include "OutputTestSupport.h"
#include "QVRJSONStreamWriter.h"
#include "QVRXMLStreamWriter.h"

using namespace outtest;

namespace {

// The golden documents pin every escape their data can hold; these are the
// ones only device names could bring: the solidus and the short control escapes.
TEST(QVRJSONStreamWriter, EscapesStringsAsCJSONPrintsThem) {
    const std::string awkward = "\"\\/\b\f\n\r\t\x01\x1f\x7f X520/X520-2 caf\xC3\xA9";
    cJSON* root = cJSON_CreateObject();
    cJSON_AddItemToObject(root, "k", cJSON_CreateString(awkward.c_str()));
    char* printed = cJSON_Print(root);
    const std::string expected = std::string(printed) + "\n";
    cJSON_free(printed);
    cJSON_Delete(root);

    TempDir dir;
    QVRJSONStreamWriter writer(dir.Path("out.json"));
    ASSERT_TRUE(writer.StartDocument());
    writer.AddString("k", awkward);
    ASSERT_TRUE(writer.Finish());
    EXPECT_EQ(expected, ReadFile(dir.Path("out.json")));
}

// More than every buffer holds, so that the failure comes while writing.
// Gives the errno of the failure, -1 if the document was written.
int WriteXML(const std::string& path, const char* encoding) {
    QVRXMLStreamWriter stream(path, encoding);
    stream.StartDocument("1.0");
    stream.StartElement("r");
    for (int i = 0; i < 20000; ++i) {
        stream.StartElement("e");
        stream.AddAttribute("a", "value");
        stream.EndElement();
    }
    errno = 0;
    return stream.Finish() ? -1 : errno;
}

int WriteJSON(const std::string& path, const char*) {
    QVRJSONStreamWriter stream(path);
    stream.StartDocument();
    stream.StartArray("a");
    for (int i = 0; i < 100000; ++i) {
        stream.StartObject(nullptr);
        stream.AddString("k", "value");
        stream.End();
    }
    errno = 0;
    return stream.Finish() ? -1 : errno;
}

// A document that cannot be written whole fails with the reason, and a file
// at the name keeps what it held.
TEST(StreamWriters, AFailedDocumentFailsWithTheReasonAndLeavesTheNameAlone) {
    const struct {
        const char *name, *path, *encoding;
        std::function<int(const std::string&, const char*)> write;
        int error;
    } rows[] = {
        {"XML, missing directory", "missing/out.xml", "UTF-8", WriteXML, ENOENT},
        {"XML, no encoder for the name", "out.xml", "NO-SUCH-ENCODING", WriteXML, 0},
        {"XML, device that is full", "/dev/full", "UTF-16", WriteXML, ENOSPC},
        {"JSON, missing directory", "missing/out.json", nullptr, WriteJSON, ENOENT},
        {"JSON, device that is full", "/dev/full", nullptr, WriteJSON, ENOSPC},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        const std::string path = row.path[0] == '/' ? row.path : dir.Path(row.path);
        if (row.path[0] != '/' && row.error == 0) std::ofstream(path) << "old";
        const int error = row.write(path, row.encoding);
        EXPECT_GT(error, 0);
        if (row.error != 0) {
            EXPECT_EQ(row.error, error);
        }
        if (row.path[0] != '/') {
            EXPECT_EQ(row.error == 0 ? "old" : "", ReadFile(path));
            EXPECT_EQ(row.error == 0, FileExists(path));
        }
    }
}

}  // namespace
