#ifndef CONFIGTESTSUPPORT_H
#define CONFIGTESTSUPPORT_H

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

#include "CQVRModuleList.h"

// A fresh temp dir that is the current directory for the life of the object.
class ConfigDir {
public:
    ConfigDir() : m_previous(std::filesystem::current_path()) {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvrcfgXXXXXX").string();
        if (mkdtemp(&pattern[0]) == nullptr) throw std::runtime_error("mkdtemp failed");
        std::filesystem::current_path(m_path = pattern);
    }
    ~ConfigDir() {
        std::error_code ignored;
        std::filesystem::current_path(m_previous, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }
    const std::string& path() const { return m_path; }
    std::string Sub(const std::string& name) const { return m_path + "/" + name; }
    // Writes the module configuration file.
    void Write(const std::string& text) const { std::ofstream(m_path + "/icconfig_new.json") << text; }

private:
    std::filesystem::path m_previous;
    std::string m_path;
};

typedef std::vector<std::string> Strings;

// Owns the records a test receives.
struct Records : std::vector<CQVRModuleDetail*> {
    ~Records() { CQVRModuleList::ClearModuleList(*this); }
};

inline Strings Dirs(const std::vector<CQVRModuleDetail*>& records) {
    Strings dirs;
    for (const CQVRModuleDetail* m : records) dirs.push_back(m->configuredDir);
    return dirs;
}

const std::set<std::string> kNames = {"GenPre12G", "Generic"};
// The generation modules of kConfig for kNames, in file order.
const Strings kGenerationOrder = {"biosinv", "nicinv",   "serialinv", "boolinv",
                                  "nainv",   "emptyinv", "numprio",   "nicinv"};

// Unmatched nodes (also by case), a null node and one without components
// contribute nothing; nicinv is listed under two matching nodes.
const char* const kConfig = R"({"SorVikConfig": {
  "PreInstall": [{"_dir": "prep", "_type": "cli", "__text": "./prep.sh", "#GUID": "1000", "_CmpType": "NA"},
    {"_dir": "prep2", "#GUID": "1003", "_CmpType": "", "_priority": "1", "_isParallelRunSupported": "false"}],
  "PostInstall": [{"_dir": "post", "#GUID": "1001", "_CmpType": "NA"}],
  "Generation": [
    {"_type": "GenPre12G", "InvComponent": [{"_dir": "biosinv", "_type": "cli", "__text": "./biosinv -x",
        "#GUID": "2000", "_CmpType": "FRMW, BIOS", "_priority": "1", "_isParallelRunSupported": "true"},
      {"_dir": "nicinv", "_type": "lib", "#GUID": "2001", "_CmpType": "FRMW"},
      {"_dir": "serialinv", "#GUID": "2002", "_CmpType": "DRVR", "_priority": "1",
       "_isParallelRunSupported": "false"},
      {"_dir": "boolinv", "#GUID": "2003", "_CmpType": "APAC", "_isParallelRunSupported": false},
      {"_dir": "nainv", "#GUID": "2004", "_CmpType": "NA"},
      {"_dir": "emptyinv", "#GUID": "2005", "_CmpType": ""},
      {"_dir": "numprio", "#GUID": "2006", "_CmpType": "FRMW", "_priority": 1,
       "_isParallelRunSupported": "FALSE"}]},
    {"_type": "GenSixteenG", "InvComponent": [{"_dir": "future", "#GUID": "2999", "_CmpType": "NA"}]},
    null, {"_type": "Generic"}, {"_type": "generic", "InvComponent": [{"_dir": "lowercase"}]},
    {"_type": "Generic", "InvComponent": [{"_dir": "nicinv", "#GUID": "2001", "_CmpType": "FRMW"}]}]}})";

#endif
