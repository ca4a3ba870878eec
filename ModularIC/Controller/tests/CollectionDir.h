#ifndef COLLECTIONDIR_H
#define COLLECTIONDIR_H

#include <ftw.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>
#include <string>

// A temporary module base directory that is the working directory for the
// life of the object, so a controller built inside it collects from it.
class CollectionDir {
public:
    CollectionDir() {
        char pattern[] = "/tmp/sorvik-controller-XXXXXX";
        if (mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
        m_path = pattern;
        char previous[4096];
        if (getcwd(previous, sizeof previous) == nullptr) throw std::runtime_error("getcwd failed");
        m_previous = previous;
        if (chdir(m_path.c_str()) != 0) throw std::runtime_error("chdir failed");
    }
    CollectionDir(const CollectionDir&) = delete;
    CollectionDir& operator=(const CollectionDir&) = delete;
    ~CollectionDir() {
        if (chdir(m_previous.c_str()) != 0) return;
        nftw(m_path.c_str(), Remove, 16, FTW_DEPTH | FTW_PHYS);
    }

    // Writes a file below the directory; mode 0755 for module scripts.
    void Write(const std::string& relative, const std::string& contents, mode_t mode = 0644) const {
        const std::string path = m_path + "/" + relative;
        const std::string::size_type slash = path.rfind('/');
        mkdir(path.substr(0, slash).c_str(), 0755);
        std::ofstream(path.c_str(), std::ios::binary | std::ios::trunc) << contents;
        chmod(path.c_str(), mode);
    }

    // A configuration of one generation-independent module printing the given text.
    void WriteModule(const std::string& output) const {
        Write("icconfig_new.json",
              R"({"SorVikConfig": {"Generation": [{"_type": "Generic", "InvComponent": [)"
              R"({"_dir": "/mod", "_type": "cli", "__text": "mod.sh", "#GUID": "1"}]}]}})");
        Write("mod/mod.sh", "#!/bin/sh\ncat <<'EOF'\n" + output + "\nEOF\n", 0755);
    }

private:
    static int Remove(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

    std::string m_path;
    std::string m_previous;
};

#endif
