#include "BQMFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <vector>

#include "BQMFileUtil.h"
#include "BaseUtilsTestSupport.h"

namespace {

BQMString Utf8(const std::string& text) { return BQMString(text); }

class BQMFileTest : public ::testing::Test {
  protected:
    FakePlatformImpl fake;
    ScopedPlatformImpl installed{&fake};
    ScopedTempDir dir;
};

TEST_F(BQMFileTest, TouchRunsTouchDashCOnAnExistingFile) {
    const std::string path = dir.File("data file.txt");
    WriteWholeFile(path, "x");
    EXPECT_TRUE(BQMFile(Utf8(path)).Touch());
    ASSERT_EQ(fake.commands.size(), 1u);
    // The path is passed as it stands, unquoted.
    EXPECT_EQ(fake.commands[0], "touch -c " + path);
}

TEST_F(BQMFileTest, TouchReturnsTrueWhateverTheCommandReports) {
    const std::string path = dir.File("f");
    WriteWholeFile(path, "");
    fake.shellStatus = 256;
    EXPECT_TRUE(BQMFile(Utf8(path)).Touch());
}

TEST_F(BQMFileTest, TouchRunsNothingForDirectoryMissingFileOrEmptyPath) {
    EXPECT_FALSE(BQMFile(Utf8(dir.Path())).Touch());
    EXPECT_FALSE(BQMFile(Utf8(dir.File("missing"))).Touch());
    EXPECT_FALSE(BQMFile().Touch());
    EXPECT_TRUE(fake.commands.empty());
}

TEST_F(BQMFileTest, ExistsSizeAndDelete) {
    const BQMFile file(Utf8(dir.File("sized")));
    EXPECT_FALSE(file.Exists());
    EXPECT_EQ(file.GetSize(), 0u);
    EXPECT_FALSE(file.Delete());
    WriteWholeFile(dir.File("sized"), "12345");
    EXPECT_TRUE(file.Exists());
    EXPECT_EQ(file.GetSize(), 5u);
    EXPECT_FALSE(file.IsEmpty());
    EXPECT_TRUE(file.Delete());
    EXPECT_FALSE(file.Exists());
}

TEST_F(BQMFileTest, RefreshReadsFlagsAndTimes) {
    const std::string path = dir.File(".hidden");
    WriteWholeFile(path, "x");
    BQMFile file(Utf8(path));
    ASSERT_TRUE(file.Refresh());
    EXPECT_TRUE(file.GetFlag(BQM_FILE_EXISTS));
    EXPECT_FALSE(file.GetFlag(BQM_FILE_IS_DIRECTORY));
    EXPECT_TRUE(file.GetFlag(BQM_FILE_IS_HIDDEN));
    EXPECT_TRUE(file.GetTime(BQM_FILE_TIME_MODIFIED).IsValid());

    BQMFile folder(Utf8(dir.Path()));
    ASSERT_TRUE(folder.Refresh());
    EXPECT_TRUE(folder.GetFlag(BQM_FILE_IS_DIRECTORY));

    BQMFile missing(Utf8(dir.File("missing")));
    EXPECT_FALSE(missing.Refresh());
    EXPECT_FALSE(missing.GetFlag(BQM_FILE_EXISTS));
    EXPECT_FALSE(missing.GetTime(BQM_FILE_TIME_MODIFIED).IsValid());
}

struct PathCase {
    const char* path;
    const char* parent;
    const char* parentWithSeparator;
    const char* name;
    const char* baseName;
    const char* extension;
};

class BQMFilePathTest : public ::testing::TestWithParam<PathCase> {};

TEST_P(BQMFilePathTest, SplitsThePath) {
    const PathCase& c = GetParam();
    const BQMFile file(Utf8(c.path));
    EXPECT_EQ(file.GetParentPath(false).GetUTF8String(), c.parent);
    EXPECT_EQ(file.GetParentPath(true).GetUTF8String(), c.parentWithSeparator);
    EXPECT_EQ(file.GetName().GetUTF8String(), c.name);
    EXPECT_EQ(file.GetBaseName().GetUTF8String(), c.baseName);
    EXPECT_EQ(file.GetExtension().GetUTF8String(), c.extension);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BQMFilePathTest,
    ::testing::Values(PathCase{"/var/log/app.log", "/var/log", "/var/log/", "app.log", "app", "log"},
                      PathCase{"name.tar.gz", "", "", "name.tar.gz", "name.tar", "gz"},
                      PathCase{"/top", "/", "/", "top", "top", ""},
                      PathCase{"dir/sub/", "dir", "dir/", "sub", "sub", ""},
                      PathCase{"/home/.profile", "/home", "/home/", ".profile", ".profile", ""},
                      PathCase{"/", "", "", "", "", ""}));

TEST(BQMFilePathEditTest, SetAppendRemoveNameAndExtension) {
    BQMFile file(Utf8("/opt/tool/run.sh"));
    file.SetName(Utf8("start.sh"));
    EXPECT_EQ(file.GetPath().GetUTF8String(), "/opt/tool/start.sh");
    file.SetExtension(Utf8(".txt"));
    EXPECT_EQ(file.GetPath().GetUTF8String(), "/opt/tool/start.txt");
    file.SetExtension(Utf8(""));
    EXPECT_EQ(file.GetPath().GetUTF8String(), "/opt/tool/start");
    file.RemoveName();
    EXPECT_EQ(file.GetPath().GetUTF8String(), "/opt/tool");
    file.AppendName(Utf8("conf"));
    EXPECT_EQ(file.GetPath().GetUTF8String(), "/opt/tool/conf");

    BQMFile root(Utf8("/"));
    root.AppendName(Utf8("etc"));
    EXPECT_EQ(root.GetPath().GetUTF8String(), "/etc");
    BQMFile empty;
    empty.AppendName(Utf8("only"));
    EXPECT_EQ(empty.GetPath().GetUTF8String(), "only");
}

TEST(BQMFilePathEditTest, ValidityAndEquality) {
    EXPECT_TRUE(BQMFile(Utf8("/tmp/good_name.log")).HasValidPath());
    EXPECT_FALSE(BQMFile(Utf8("/tmp/bad:name")).HasValidPath());
    EXPECT_FALSE(BQMFile().HasValidPath());
    EXPECT_TRUE(BQMFile(Utf8("/x/ok.txt")).IsValidName());
    EXPECT_FALSE(BQMFile(Utf8("/x/what?")).IsValidName());
    EXPECT_TRUE(BQMFile(Utf8("/tmp/nothing-here")).ParentExists());
    EXPECT_FALSE(BQMFile(Utf8("/no/such/parent/x")).ParentExists());
    EXPECT_TRUE(BQMFile(Utf8("a")) == BQMFile(Utf8("a")));
    EXPECT_TRUE(BQMFile(Utf8("a")) != BQMFile(Utf8("b")));
    EXPECT_FALSE(BQMFile().HasPath());
}

TEST_F(BQMFileTest, MakeDirectoryAndCreateReportErrorCodes) {
    BQMErrorCodeEnum code = BQM_ERROR_UNKNOWN;
    const BQMFile nested(Utf8(dir.File("a/b/c")));
    EXPECT_FALSE(nested.MakeDirectory(false, &code));
    EXPECT_EQ(code, BQM_ERROR_NOT_FOUND);
    EXPECT_TRUE(nested.MakeDirectory(true, &code));
    EXPECT_EQ(code, BQM_ERROR_NONE);
    EXPECT_TRUE(BQMFileUtil::IsDirectory(nested.GetPath()));
    EXPECT_TRUE(nested.MakeDirectory(false, &code));

    const BQMFile file(Utf8(dir.File("a/new.txt")));
    EXPECT_TRUE(file.Create(false, &code));
    EXPECT_EQ(code, BQM_ERROR_NONE);
    EXPECT_FALSE(file.Create(false, &code));
    EXPECT_EQ(code, BQM_ERROR_ALREADY_EXISTS);
    WriteWholeFile(dir.File("a/new.txt"), "content");
    EXPECT_TRUE(file.Create(true, &code));
    EXPECT_EQ(file.GetSize(), 0u);
    EXPECT_FALSE(file.MakeDirectory(false, &code));
    EXPECT_EQ(code, BQM_ERROR_ALREADY_EXISTS);
    EXPECT_FALSE(BQMFile().Create(false, &code));
    EXPECT_EQ(code, BQM_ERROR_INVALID_PATH);
}

TEST_F(BQMFileTest, UniqueDirectoryAndFileNamesFollowThePattern) {
    BQMString created;
    ASSERT_TRUE(BQMFileUtil::CreateUniqueDirectory(Utf8(dir.Path()), Utf8("pre_"), created));
    EXPECT_TRUE(BQMFileUtil::IsDirectory(created));
    const std::string name = BQMFile(created).GetName().GetUTF8String();
    EXPECT_EQ(name.rfind("pre_", 0), 0u) << name;
    EXPECT_EQ(std::count(name.begin(), name.end(), '-'), 4) << name;

    BQMString second;
    ASSERT_TRUE(BQMFileUtil::CreateUniqueDirectory(Utf8(dir.Path()), Utf8("pre_"), second));
    EXPECT_NE(created, second);
    EXPECT_FALSE(BQMFileUtil::CreateUniqueDirectory(Utf8(dir.File("missing")), Utf8("p"), second));

    BQMString file;
    ASSERT_TRUE(BQMFileUtil::CreateUniqueFile(Utf8(dir.Path()), Utf8("f"), file));
    EXPECT_TRUE(BQMFile(file).Exists());
    EXPECT_FALSE(BQMFileUtil::IsDirectory(file));
}

TEST_F(BQMFileTest, FileUtilCopiesMovesListsAndDeletes) {
    BQMFile(Utf8(dir.File("src/inner"))).MakeDirectory(true);
    WriteWholeFile(dir.File("src/one.txt"), "1");
    WriteWholeFile(dir.File("src/inner/two.txt"), "22");

    std::vector<BQMString> names;
    ASSERT_TRUE(BQMFileUtil::GetFileNamesInDirectory(Utf8(dir.File("src")), names));
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], "inner");
    EXPECT_EQ(names[1], "one.txt");
    EXPECT_FALSE(BQMFileUtil::GetFileNamesInDirectory(Utf8(dir.File("missing")), names));

    ASSERT_TRUE(BQMFileUtil::CopyDirectory(Utf8(dir.File("src")), Utf8(dir.File("copy"))));
    EXPECT_EQ(ReadWholeFile(dir.File("copy/inner/two.txt")), "22");
    EXPECT_FALSE(BQMFileUtil::CopyDirectory(Utf8(dir.File("src")), Utf8(dir.File("copy"))));

    EXPECT_FALSE(
        BQMFileUtil::MakeCopyOfFile(Utf8(dir.File("src/one.txt")), Utf8(dir.File("copy/one.txt")), false));
    WriteWholeFile(dir.File("src/one.txt"), "changed");
    EXPECT_TRUE(
        BQMFileUtil::MakeCopyOfFile(Utf8(dir.File("src/one.txt")), Utf8(dir.File("copy/one.txt")), true));
    EXPECT_EQ(ReadWholeFile(dir.File("copy/one.txt")), "changed");

    EXPECT_TRUE(BQMFileUtil::MoveFile(Utf8(dir.File("copy/one.txt")), Utf8(dir.File("moved.txt"))));
    EXPECT_EQ(ReadWholeFile(dir.File("moved.txt")), "changed");
    EXPECT_FALSE(BQMFile(Utf8(dir.File("copy/one.txt"))).Exists());
    EXPECT_TRUE(BQMFileUtil::RenameFile(Utf8(dir.File("moved.txt")), Utf8(dir.File("renamed.txt"))));

    EXPECT_FALSE(BQMFileUtil::DeleteDirectory(Utf8(dir.File("src")), false));
    EXPECT_TRUE(BQMFileUtil::DeleteDirectory(Utf8(dir.File("src")), true));
    EXPECT_FALSE(BQMFileUtil::IsDirectory(Utf8(dir.File("src"))));
    EXPECT_FALSE(BQMFileUtil::DeleteDirectory(Utf8(dir.File("renamed.txt")), true));
    EXPECT_EQ(BQMFileUtil::GetFile(Utf8("/etc"), Utf8("hosts")).GetPath(), "/etc/hosts");
}

TEST(BQMFileUtilTest, ExecutablePathNamesThisTestProgram) {
    const BQMString path = BQMFileUtil::GetCurrentExecutablePath(true);
    EXPECT_EQ(BQMFile(path).GetName(), "baseutils_tests");
    EXPECT_EQ(BQMFileUtil::GetCurrentExecutablePath(false), BQMFile(path).GetParentPath(false));
}

}  // namespace
