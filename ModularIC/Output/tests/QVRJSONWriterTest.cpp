#include <gtest/gtest.h>

#include <fstream>

#include "OutputTestSupport.h"
#include "QVRJSONWriter.h"

using namespace outtest;

TEST(QVRJSONWriter, ReplacesAnExistingFileAndWritesNothingWhereItCannotOpen) {
    TempDir dir;
    std::ofstream(dir.Path("a.json")) << std::string(1000, 'z');
    QVRJSONWriter writer;
    ASSERT_TRUE(writer.Initialize());
    EXPECT_TRUE(writer.Write(dir.Path("a.json")));
    EXPECT_EQ("{\n}\n", ReadFile(dir.Path("a.json")));
    EXPECT_FALSE(writer.Write(dir.Path("missing/a.json")));
    EXPECT_FALSE(FileExists(dir.Path("missing")));
}
