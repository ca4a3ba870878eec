#include "CFileUtils.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <set>

#include "CQVRLogOption.h"
#include "CQVROutputOption.h"

namespace {

// A file system given as sets of paths, and links from name to target.
class FakeFileSystem : public IQVRFileSystem {
public:
    bool IsDirectory(const std::string& path) override { return directories.count(path) != 0; }
    bool Exists(const std::string& path) override {
        const std::string target = ResolveLinks(path);
        return directories.count(target) || files.count(target);
    }
    bool IsWritable(const std::string& path) override { return writable.count(ResolveLinks(path)) != 0; }
    std::string ResolveLinks(const std::string& path) override {
        const auto link = links.find(path);
        return link == links.end() ? path : ResolveLinks(link->second);
    }
    std::set<std::string> directories, files, writable;
    std::map<std::string, std::string> links;
};

// The real file system behind the checks.
TEST(CFileUtilsTest, RealQueriesOnATemporaryDirectory) {
    char pattern[] = "/tmp/cfileutils-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    const std::string dir = pattern, file = dir + "/present.xml";
    std::ofstream(file.c_str()) << "x";
    EXPECT_EQ(CFileUtils(file).CheckWritableFile(), CFileUtils::FILE_WRITABLE);
    EXPECT_EQ(CFileUtils(file + "/inv.xml").CheckWritableFile(), CFileUtils::DIRECTORY_MISSING);
    // Links: through a relative and an absolute one to the file; to nothing;
    // and a link the kernel follows where names do not lead.
    ASSERT_EQ(::symlink(file.c_str(), (dir + "/abs").c_str()), 0);
    ASSERT_EQ(::symlink("abs", (dir + "/rel").c_str()), 0);
    ASSERT_EQ(::symlink("missing/x.xml", (dir + "/dangling").c_str()), 0);
    EXPECT_EQ(IQVRFileSystem::Real().ResolveLinks(dir + "/rel"), file);
    EXPECT_EQ(CFileUtils(dir + "/rel").CheckWritableFile(), CFileUtils::FILE_WRITABLE);
    EXPECT_EQ(CFileUtils(dir + "/dangling").CheckWritableFile(), CFileUtils::LINK_DANGLING);
    EXPECT_EQ(CFileUtils("/dev/stdout").CheckWritableFile(), CFileUtils::FILE_WRITABLE);
    for (const char* link : {"/abs", "/rel", "/dangling"}) ::unlink((dir + link).c_str());
    ::unlink(file.c_str());
    ::rmdir(dir.c_str());
}

struct PathRow {
    std::string path;
    CFileUtils::WritableFileState state;
    unsigned int logAnswer, outputAnswer;
};

TEST(CFileUtilsTest, PathChecksRunInOrderAndEachOptionAnswersItsCode) {
    FakeFileSystem fs;
    fs.directories = {"/", "/ok", "/ro", "."};
    fs.writable = {"/ok", "/ok/writable.xml", "."};
    fs.files = {"/ok/writable.xml", "/ok/readonly.xml", "/ro/file.xml"};
    fs.links = {{"/ok/to-ro.xml", "/ro/file.xml"},
                {"/ok/dangling.xml", "/ok/none.xml"},
                {"/ro/to-ok.xml", "/ok/link.xml"},
                {"/ok/link.xml", "/ok/writable.xml"}};
    // The log option answers 6 throughout; the output option 35 for an illegal or missing path.
    // clang-format off
    const std::vector<PathRow> rows = {
        {"", CFileUtils::ILLEGAL_PATH, 6, 35}, {"/ok/a|b.xml", CFileUtils::ILLEGAL_PATH, 6, 35},
        {"a?b", CFileUtils::ILLEGAL_PATH, 6, 35}, {"a*b", CFileUtils::ILLEGAL_PATH, 6, 35},
        {"a<b", CFileUtils::ILLEGAL_PATH, 6, 35}, {"a>b", CFileUtils::ILLEGAL_PATH, 6, 35},
        {"a\"b", CFileUtils::ILLEGAL_PATH, 6, 35},
        // Values are split at ",".
        {"/ok/a,b.xml", CFileUtils::ILLEGAL_PATH, 6, 35}, {",", CFileUtils::ILLEGAL_PATH, 6, 35},
        // A link is checked as the file it leads to, through every link on the way.
        {"/ok/to-ro.xml", CFileUtils::DIRECTORY_NOT_WRITABLE, 6, 6},
        {"/ok/dangling.xml", CFileUtils::LINK_DANGLING, 6, 6},
        {"/ro/to-ok.xml", CFileUtils::FILE_WRITABLE, 0, 0},
        {"/nodir/a.xml", CFileUtils::DIRECTORY_MISSING, 6, 35},
        {"/ro/file.xml", CFileUtils::DIRECTORY_NOT_WRITABLE, 6, 6},
        {"/ok/readonly.xml", CFileUtils::FILE_NOT_WRITABLE, 6, 6},
        {"/ok/writable.xml", CFileUtils::FILE_WRITABLE, 0, 0},
        {"/ok/new.xml", CFileUtils::FILE_TO_BE_CREATED, 0, 0},
        // A bare name lies in ".", a name at the root in "/".
        {"new file.xml", CFileUtils::FILE_TO_BE_CREATED, 0, 0},
        {"/inv.xml", CFileUtils::DIRECTORY_NOT_WRITABLE, 6, 6}};
    // clang-format on
    CQVRLogOption log(fs);
    CQVROutputOption output(fs);
    for (const PathRow& row : rows) {
        EXPECT_EQ(CFileUtils(row.path, fs).CheckWritableFile(), row.state) << row.path;
        EXPECT_EQ(log.Validate(row.path), row.logAnswer) << row.path;
        EXPECT_EQ(output.Validate(row.path), row.outputAnswer) << row.path;
    }
}

}  // namespace
