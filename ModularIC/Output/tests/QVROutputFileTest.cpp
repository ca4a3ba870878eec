#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "OutputTestSupport.h"
#include "QVROutputFile.h"
#include "QVRTemporaryFiles.h"

using namespace outtest;

namespace {

std::vector<std::string> Names(const std::string& directory) {
    std::vector<std::string> names;
    if (DIR* listing = ::opendir(directory.c_str())) {
        while (const dirent* entry = ::readdir(listing))
            if (entry->d_name[0] != '.' || entry->d_name[1] > '.') names.push_back(entry->d_name);
        ::closedir(listing);
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool WriteAll(const std::string& path, const std::string& text) {
    QVROutputFile file(path);
    return file.Open() && file.Append(text.data(), text.size()) && file.Commit();
}

TEST(QVROutputFile, ALinkToNothingOrALoopIsRefusedAndNothingIsCreated) {
    TempDir dir;
    ASSERT_EQ(::symlink("missing.xml", dir.Path("dangling").c_str()), 0);
    ASSERT_EQ(::symlink("loop", dir.Path("loop").c_str()), 0);
    errno = 0;
    EXPECT_FALSE(WriteAll(dir.Path("dangling"), "new"));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(WriteAll(dir.Path("loop"), "new"));
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(Names(dir.path), (std::vector<std::string>{"dangling", "loop"}));
}

TEST(QVROutputFile, AReplacedFileKeepsOwnerGroupAndModeAndANewOneGetsTheUmasksMode) {
    TempDir dir;
    const std::string old = dir.Path("old.xml");
    std::ofstream(old) << "old";
    ASSERT_EQ(::chmod(old.c_str(), 0640), 0);
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(old.c_str(), 65534, 65534), 0);
    }
    struct stat before, after;
    ASSERT_EQ(::stat(old.c_str(), &before), 0);
    const mode_t mask = ::umask(027);
    EXPECT_TRUE(WriteAll(old, "new"));
    EXPECT_TRUE(WriteAll(dir.Path("new.xml"), "new"));
    ::umask(mask);
    ASSERT_EQ(::stat(old.c_str(), &after), 0);
    EXPECT_NE(after.st_ino, before.st_ino);  // replaced, not rewritten in place
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_EQ(after.st_mode & 07777, 0640u);
    ASSERT_EQ(::stat(dir.Path("new.xml").c_str(), &after), 0);
    EXPECT_EQ(after.st_mode & 07777, 0640u);
}

// A process ended by a signal leaves none of its unfinished documents behind.
TEST(QVRTemporaryFiles, RemoveAllBeforeExitRemovesEveryUnfinishedDocument) {
    TempDir dir;
    std::ofstream(dir.Path("kept.xml")) << "old";
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        QVROutputFile first(dir.Path("kept.xml"));
        QVROutputFile second(dir.Path("new.xml"));
        const bool opened = first.Open() && first.Append("x", 1) && second.Open();
        QVRTemporaryFiles::RemoveAllBeforeExit();
        ::_exit(opened && Names(dir.path) == std::vector<std::string>{"kept.xml"} ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(Names(dir.path), std::vector<std::string>{"kept.xml"});
    EXPECT_EQ(ReadFile(dir.Path("kept.xml")), "old");
}

}  // namespace
