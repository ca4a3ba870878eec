#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "OutputTestSupport.h"
#include "QVRJSONStreamWriter.h"

using namespace outtest;

namespace {

// Shapes the inventory does not use all of: nested and empty arrays and
// objects, escapes, each written by cJSON's printer and by the stream writer.
TEST(QVRJSONStreamWriter, LaysOutWhatCJSONPrintsForTheSameTree) {
    const std::string awkward = "\"\\/\b\f\n\r\t\x01\x1f\x7f caf\xC3\xA9";
    cJSON* root = cJSON_CreateObject();
    cJSON_AddItemToObject(root, "empty", cJSON_CreateObject());
    cJSON_AddItemToObject(root, "none", cJSON_CreateArray());
    cJSON* list = cJSON_CreateArray();
    cJSON_AddItemToObject(root, "list", list);
    cJSON* first = cJSON_CreateObject();
    cJSON_AddItemToObject(first, "k", cJSON_CreateString(awkward.c_str()));
    cJSON_AddItemToArray(list, first);
    cJSON_AddItemToArray(list, cJSON_CreateObject());
    cJSON* inner = cJSON_CreateArray();
    cJSON_AddItemToArray(inner, cJSON_CreateObject());
    cJSON_AddItemToArray(list, inner);
    cJSON_AddItemToObject(root, "last", cJSON_CreateString(""));
    char* printed = cJSON_Print(root);
    const std::string expected = std::string(printed) + "\n";
    cJSON_free(printed);
    cJSON_Delete(root);

    TempDir dir;
    QVRJSONStreamWriter writer(dir.Path("out.json"));
    ASSERT_TRUE(writer.StartDocument());
    writer.StartObject("empty");
    writer.End();
    writer.StartArray("none");
    writer.End();
    writer.StartArray("list");
    writer.StartObject(nullptr);
    writer.AddString("k", awkward);
    writer.End();
    writer.StartObject(nullptr);
    writer.End();
    writer.StartArray(nullptr);
    writer.StartObject(nullptr);
    writer.End();
    writer.End();
    writer.End();
    writer.AddString("last", "");
    ASSERT_TRUE(writer.Finish());
    EXPECT_EQ(expected, ReadFile(dir.Path("out.json")));
}

TEST(QVRJSONStreamWriter, AFailedDocumentFailsWithTheReason) {
    TempDir dir;
    QVRJSONStreamWriter missing(dir.Path("missing/out.json"));
    EXPECT_FALSE(missing.StartDocument());
    errno = 0;
    EXPECT_FALSE(missing.Finish());
    EXPECT_EQ(ENOENT, errno);
    EXPECT_FALSE(FileExists(dir.Path("missing")));

    QVRJSONStreamWriter full("/dev/full");
    ASSERT_TRUE(full.StartDocument());
    full.StartArray("a");
    for (int i = 0; i < 100000; ++i) {
        full.StartObject(nullptr);
        full.AddString("k", "value");
        full.End();
    }
    errno = 0;
    EXPECT_FALSE(full.Finish());
    EXPECT_EQ(ENOSPC, errno);
}

}  // namespace
