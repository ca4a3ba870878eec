#include <gtest/gtest.h>

#include <fstream>

#include "OutputTestSupport.h"
#include "QVRXMLWriter.h"

using namespace outtest;

TEST(QVRXMLWriter, ReplacesAnExistingFileAndSavesNothingWithoutADocument) {
    TempDir dir;
    QVRXMLWriter empty;
    EXPECT_FALSE(empty.Write(dir.Path("a.xml"), "UTF-8"));
    EXPECT_FALSE(FileExists(dir.Path("a.xml")));
    std::ofstream(dir.Path("a.xml")) << std::string(4096, 'x');
    QVRXMLWriter writer;
    ASSERT_TRUE(writer.AddHeader("1.0"));
    writer.AddNewChildNodeText(writer.AddRootNode("r"), "m", "x < y");
    ASSERT_TRUE(writer.Write(dir.Path("a.xml"), ""));
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\n  <m>x &lt; y</m>\n</r>\n",
              ReadFile(dir.Path("a.xml")));
}
