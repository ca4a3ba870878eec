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
        char pattern[] = "/tmp/sorvik-controller-XXXXXX", previous[4096];
        if (mkdtemp(pattern) == nullptr || getcwd(previous, sizeof previous) == nullptr ||
            chdir(pattern) != 0) {
            throw std::runtime_error("cannot enter a temporary directory");
        }
        m_path = pattern;
        m_previous = previous;
    }
    ~CollectionDir() {
        if (chdir(m_previous.c_str()) != 0) return;
        nftw(
            m_path.c_str(), [](const char* path, const struct stat*, int, FTW*) { return ::remove(path); },
            16, FTW_DEPTH | FTW_PHYS);
    }

    // Configures one generation-independent module that prints the text.
    void WriteModule(const std::string& output) const {
        std::ofstream(m_path + "/icconfig_new.json")
            << R"({"SorVikConfig": {"Generation": [{"_type": "Generic", "InvComponent": [)"
               R"({"_dir": "/mod", "_type": "cli", "__text": "mod.sh", "#GUID": "1"}]}]}})";
        mkdir((m_path + "/mod").c_str(), 0755);
        std::ofstream(m_path + "/mod/mod.sh") << "#!/bin/sh\ncat <<'EOF'\n" + output + "\nEOF\n";
        chmod((m_path + "/mod/mod.sh").c_str(), 0755);
    }

private:
    std::string m_path, m_previous;
};

#endif
