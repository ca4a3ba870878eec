#include "CFileUtils.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <set>

#include "CQVRBdirOption.h"
#include "CQVRLogOption.h"
#include "CQVROutputOption.h"
#include "StreamCapture.h"

namespace {

// A file system given as sets of paths.
class FakeFileSystem : public IQVRFileSystem {
public:
    bool IsDirectory(const std::string& path) override { return directories.count(path) != 0; }
    bool Exists(const std::string& path) override { return directories.count(path) || files.count(path); }
    bool IsWritable(const std::string& path) override { return writable.count(path) != 0; }

    std::set<std::string> directories, files, writable;
};

class ScopedFakeFileSystem {
public:
    ScopedFakeFileSystem() { m_previous = CFileUtils::SetFileSystemForTesting(&fake); }
    ~ScopedFakeFileSystem() { CFileUtils::SetFileSystemForTesting(m_previous); }
    FakeFileSystem fake;

private:
    IQVRFileSystem* m_previous;
};

TEST(CFileUtilsTest, IllegalSubstringsAndEmptyPathAreInvalid) {
    EXPECT_TRUE(CFileUtils("/tmp/inv.xml").HasValidPath());
    EXPECT_TRUE(CFileUtils("inv file.xml").HasValidPath());
    for (const char* path : {"", "a?b", "a*b", "a<b", "a\"b", "a>b", "a|b"}) {
        EXPECT_FALSE(CFileUtils(path).HasValidPath()) << path;
    }
}

TEST(CFileUtilsTest, DirectoryPart) {
    EXPECT_EQ(CFileUtils("/tmp/x/inv.xml").GetDirName(), "/tmp/x");
    EXPECT_EQ(CFileUtils("sub/inv.xml").GetDirName(), "sub");
    EXPECT_EQ(CFileUtils("inv.xml").GetDirName(), ".");
    EXPECT_EQ(CFileUtils("/inv.xml").GetDirName(), "/");
}

TEST(CFileUtilsTest, RealQueriesOnATemporaryDirectory) {
    char pattern[] = "/tmp/cfileutils-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    const std::string dir = pattern;
    const std::string file = dir + "/present.xml";
    FILE* created = std::fopen(file.c_str(), "w");
    ASSERT_NE(created, nullptr);
    std::fclose(created);

    const CFileUtils present(file);
    EXPECT_TRUE(present.IsFileExists());
    EXPECT_TRUE(present.HasWritePermission());
    EXPECT_TRUE(present.IsDirectoryExist(dir));
    EXPECT_TRUE(present.HasWritePermissionDir(dir));
    EXPECT_FALSE(present.IsDirectoryExist(file));
    EXPECT_EQ(present.CheckWritableFile(), CFileUtils::FILE_WRITABLE);

    const CFileUtils absent(dir + "/absent.xml");
    EXPECT_FALSE(absent.IsFileExists());
    EXPECT_EQ(absent.CheckWritableFile(), CFileUtils::FILE_TO_BE_CREATED);
    EXPECT_EQ(CFileUtils(dir + "/missing/inv.xml").CheckWritableFile(), CFileUtils::DIRECTORY_MISSING);

    ::unlink(file.c_str());
    ::rmdir(dir.c_str());
}

struct PathRow {
    const char* name;
    std::string path;
    CFileUtils::WritableFileState state;
    unsigned int logAnswer;
    unsigned int outputAnswer;
};

TEST(CFileUtilsTest, PathChecksRunInOrderAndEachOptionAnswersItsCode) {
    ScopedFakeFileSystem fs;
    fs.fake.directories = {"/ok", "/ro", "."};
    fs.fake.writable = {"/ok", "/ok/writable.xml", "."};
    fs.fake.files = {"/ok/writable.xml", "/ok/readonly.xml", "/ro/file.xml"};

    const std::vector<PathRow> rows = {
        {"empty", "", CFileUtils::ILLEGAL_PATH, 6, 35},
        {"illegal", "/ok/a|b.xml", CFileUtils::ILLEGAL_PATH, 6, 35},
        {"missing dir", "/nodir/a.xml", CFileUtils::DIRECTORY_MISSING, 6, 35},
        {"read-only dir", "/ro/file.xml", CFileUtils::DIRECTORY_NOT_WRITABLE, 6, 6},
        {"read-only file", "/ok/readonly.xml", CFileUtils::FILE_NOT_WRITABLE, 6, 6},
        {"writable file", "/ok/writable.xml", CFileUtils::FILE_WRITABLE, 0, 0},
        {"new file", "/ok/new.xml", CFileUtils::FILE_TO_BE_CREATED, 0, 0},
        {"bare new file", "new.xml", CFileUtils::FILE_TO_BE_CREATED, 0, 0},
    };
    CQVRLogOption log;
    CQVROutputOption output;
    for (const PathRow& row : rows) {
        EXPECT_EQ(CFileUtils(row.path).CheckWritableFile(), row.state) << row.name;
        EXPECT_EQ(log.Validate(row.path), row.logAnswer) << row.name;
        EXPECT_EQ(output.Validate(row.path), row.outputAnswer) << row.name;
    }
}

TEST(CQVRBdirOptionTest, NamesPathAndDirectoryAndAccepts) {
    ScopedFakeFileSystem fs;  // nothing exists: the base directory is not checked
    CQVRBdirOption bdir;
    StreamCapture out(stdout);
    const unsigned int code = bdir.Validate("/srv/inv/out");
    EXPECT_EQ(out.Finish(), "FILE PATH = /srv/inv/out\nDIR PATH = /srv/inv\n");
    EXPECT_EQ(code, 0u);
}

}  // namespace
