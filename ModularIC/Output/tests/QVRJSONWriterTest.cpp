#include <gtest/gtest.h>

#include "OutputTestSupport.h"
#include "QVRJSONWriter.h"

using namespace outtest;

TEST(QVRJSONWriter, PrintsFormattedTreeAndNewlineToFile) {
    TempDir dir;
    QVRJSONWriter writer;
    ASSERT_TRUE(writer.Initialize());
    EXPECT_TRUE(writer.AddString("a", "b"));
    cJSON* object = writer.CreateObject();
    EXPECT_TRUE(writer.AddString(object, std::string("k"), std::string("v")));
    EXPECT_TRUE(writer.AddObjectToRoot(object, "o"));
    cJSON* array = writer.CreateArray("list");
    ASSERT_NE(array, nullptr);
    EXPECT_TRUE(writer.AddItemToArrayObject("list", "x"));
    EXPECT_TRUE(writer.AdditemToArray(array, cJSON_CreateString("y")));
    EXPECT_TRUE(writer.Write(dir.Path("a.json")));
    EXPECT_EQ(ReadFile(dir.Path("a.json")),
              "{\n"
              "\t\"a\":\t\"b\",\n"
              "\t\"o\":\t{\n"
              "\t\t\"k\":\t\"v\"\n"
              "\t},\n"
              "\t\"list\":\t[\"x\", \"y\"]\n"
              "}\n");
}

TEST(QVRJSONWriter, PrintsToStandardOutputWhenPathEmpty) {
    QVRJSONWriter writer;
    ASSERT_TRUE(writer.Initialize());
    writer.AddString(std::string("a"), std::string("b"));
    StdoutCapture capture;
    EXPECT_TRUE(writer.Write(""));
    EXPECT_EQ(capture.Finish(), "{\n\t\"a\":\t\"b\"\n}\n");
}

TEST(QVRJSONWriter, ReplacesExistingFileContent) {
    TempDir dir;
    WriteFile(dir.Path("a.json"), std::string(1000, 'z'));
    QVRJSONWriter writer;
    ASSERT_TRUE(writer.Initialize());
    EXPECT_TRUE(writer.Write(dir.Path("a.json")));
    EXPECT_EQ(ReadFile(dir.Path("a.json")), "{\n}\n");
}

TEST(QVRJSONWriter, UnopenableFileWritesNothing) {
    TempDir dir;
    QVRJSONWriter writer;
    ASSERT_TRUE(writer.Initialize());
    EXPECT_FALSE(writer.Write(dir.Path("missing/dir/a.json")));
    EXPECT_FALSE(FileExists(dir.Path("missing")));
}

TEST(QVRJSONWriter, NullParentOrItemIsDeclinedWithoutLeaking) {
    QVRJSONWriter writer;
    EXPECT_FALSE(writer.AddObjectToRoot(cJSON_CreateObject(), "x"));  // no root yet
    ASSERT_TRUE(writer.Initialize());
    EXPECT_FALSE(writer.AddObject(nullptr, cJSON_CreateObject(), "x"));
    EXPECT_FALSE(writer.AddObject(writer.GetRoot(), nullptr, "x"));
    EXPECT_FALSE(writer.AddString(nullptr, "k", "v"));
    EXPECT_EQ(writer.CreateArray(nullptr, "a"), nullptr);
    EXPECT_FALSE(writer.AdditemToArray(nullptr, cJSON_CreateString("s")));
    EXPECT_FALSE(writer.AddItemToArrayObject("absent", "v"));
    EXPECT_EQ(cJSON_GetArraySize(writer.GetRoot()), 0);
}

TEST(QVRJSONWriter, WriteWithoutRootPrintsOnlyNewlineToFile) {
    TempDir dir;
    QVRJSONWriter writer;
    EXPECT_FALSE(writer.Write(dir.Path("e.json")));
    EXPECT_EQ(ReadFile(dir.Path("e.json")), "\n");
}
