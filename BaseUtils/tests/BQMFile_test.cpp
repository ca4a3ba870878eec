#include "BQMFile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BaseUtilsTestSupport.h"

namespace {

BQMString S(const std::string& text) { return BQMString(text); }

TEST(BQMFileTest, TouchRunsTouchDashCOnAnExistingFileOnly) {
    FakePlatform fake;
    ScopedTempDir dir;
    const std::string path = dir.File("data file.txt");
    WriteWholeFile(path, "x");
    fake.defaultStatus = 256;  // the command's status does not matter
    EXPECT_TRUE(BQMFile(S(path), fake).Touch());
    EXPECT_EQ(fake.commands, std::vector<std::string>{"touch -c " + path});  // unquoted
    EXPECT_FALSE(BQMFile(S(dir.Path()), fake).Touch());
    EXPECT_FALSE(BQMFile(S(dir.File("missing")), fake).Touch() || BQMFile().Touch());
    EXPECT_EQ(fake.commands.size(), 1u);
}

TEST(BQMFileTest, SplitsSlashSeparatedPaths) {
    const char* const cases[][5] = {{"/var/log/app.log", "/var/log/", "app.log", "app", "log"},
                                    {"dir/sub/", "dir/", "sub", "sub", ""},
                                    {"/home/.profile", "/home/", ".profile", ".profile", ""},
                                    {"/", "", "", "", ""}};
    for (const auto& c : cases) {
        const BQMFile file(S(c[0]));
        EXPECT_EQ(file.GetParentPath(true), c[1]) << c[0];
        EXPECT_EQ(file.GetName(), c[2]) << c[0];
        EXPECT_EQ(file.GetBaseName(), c[3]) << c[0];
        EXPECT_EQ(file.GetExtension(), c[4]) << c[0];
    }
    BQMFile file(S("/opt/tool/run.sh"));
    file.SetExtension(S(".txt"));
    EXPECT_EQ(file.GetPath(), "/opt/tool/run.txt");
}

TEST(BQMFileTest, MakeDirectoryAndCreateReportErrorCodes) {
    ScopedTempDir dir;
    BQMErrorCodeEnum code = BQM_ERROR_UNKNOWN;
    const BQMFile nested(S(dir.File("a/b"))), file(S(dir.File("a/new.txt")));
    EXPECT_FALSE(nested.MakeDirectory(false, &code) || code != BQM_ERROR_NOT_FOUND);
    EXPECT_TRUE(nested.MakeDirectory(true, &code) && code == BQM_ERROR_NONE);
    EXPECT_TRUE(file.Create(false, &code));
    EXPECT_FALSE(file.Create(false, &code) || code != BQM_ERROR_ALREADY_EXISTS);
    WriteWholeFile(dir.File("a/new.txt"), "content");
    EXPECT_TRUE(file.GetSize() == 7 && file.Create(true, &code) && file.IsEmpty());
    EXPECT_FALSE(BQMFile().Create(false, &code) || code != BQM_ERROR_INVALID_PATH);
    EXPECT_TRUE(file.Delete() && !file.Exists());
}

}  // namespace
