#ifndef SCOPEDWORKINGDIRECTORY_H
#define SCOPEDWORKINGDIRECTORY_H

// A fresh temporary directory made the current directory for the lifetime of
// the object; the previous directory is restored and the temporary one
// removed afterwards.

#include <dirent.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

class ScopedWorkingDirectory {
  public:
    ScopedWorkingDirectory() {
        char previous[4096];
        if (getcwd(previous, sizeof(previous)) != nullptr) mPrevious = previous;
        char pattern[] = "/tmp/bqmipmi_test_XXXXXX";
        if (mkdtemp(pattern) != nullptr) mPath = pattern;
        if (!mPath.empty() && chdir(mPath.c_str()) != 0) mPath.clear();
    }

    ~ScopedWorkingDirectory() {
        if (!mPrevious.empty() && chdir(mPrevious.c_str()) != 0) return;
        if (mPath.empty()) return;
        if (DIR* dir = opendir(mPath.c_str())) {
            while (struct dirent* entry = readdir(dir)) {
                std::string name = entry->d_name;
                if (name != "." && name != "..") unlink((mPath + "/" + name).c_str());
            }
            closedir(dir);
        }
        rmdir(mPath.c_str());
    }

    ScopedWorkingDirectory(const ScopedWorkingDirectory&) = delete;
    ScopedWorkingDirectory& operator=(const ScopedWorkingDirectory&) = delete;

    bool Ok() const { return !mPath.empty(); }
    const std::string& Path() const { return mPath; }

    static void WriteFile(const std::string& name, const std::string& content) {
        std::ofstream out(name.c_str(), std::ios::binary | std::ios::trunc);
        out << content;
    }

    static bool Exists(const std::string& name) { return access(name.c_str(), F_OK) == 0; }

    static std::string ReadFile(const std::string& name) {
        std::ifstream in(name.c_str(), std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

  private:
    std::string mPrevious;
    std::string mPath;
};

#endif
