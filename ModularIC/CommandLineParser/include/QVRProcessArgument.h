#ifndef QVRPROCESSARGUMENT_H
#define QVRPROCESSARGUMENT_H

#include <map>
#include <set>
#include <string>

#include "QVRExcludeOptionList.h"
#include "QVROptionFactory.h"

// Splits argv into a map from option key to value text. Each word is one
// option, written alone or as spelling "=" value; repeated list options
// accumulate their values separated by ",".
class QVRProcessArgument {
public:
    typedef std::map<std::string, std::string> OptionMap;

    // fileSystem, borrowed, answers the path options' checks.
    explicit QVRProcessArgument(IQVRFileSystem& fileSystem = IQVRFileSystem::Real());

    // Keeps the base name of argv[0] and processes argv[1..] in order; stops at
    // the first non-zero result, or with 0 once help or version has silenced the rest.
    unsigned int ParseCmdLine(int argc, char** argv, OptionMap& options);
    // One word; 0 or a result code (5 unknown spelling or a value where none is
    // taken, 23 "=" with nothing after it).
    unsigned int ProcessEachCmd(std::string& word, OptionMap& options);
    // Processes each blank-separated word of the value; the first non-zero result.
    unsigned int CheckForExclusionList(std::string* value, OptionMap& options);
    // Stores the option; false for a second "out", "outputformat", "logc" or
    // "encode", and for help or version after another option.
    bool PopulateArgumentList(std::string& key, std::string& value, OptionMap& options);
    // Puts the base directory in front of a path without any "/".
    void AppendPathIfRequired(std::string& path) const;
    void PopulteBaseDir(std::string dir) { m_baseDir = dir; }

    const std::string& GetProgramName() const { return m_programName; }
    const std::string& GetBaseDir() const { return m_baseDir; }
    const QVROptionFactory& GetFactory() const { return m_factory; }

    void setIgnoreRestOption() { m_ignoreRest = true; }
    void unSetIgnoreRestOption() { m_ignoreRest = false; }
    bool IsIgnoreRestSet() const { return m_ignoreRest; }

private:
    QVROptionFactory m_factory;
    QVRExcludeOptionList& m_excludeList;
    std::set<char> m_optionPrefixes;
    std::string m_programName;
    std::string m_baseDir;
    bool m_ignoreRest;
    bool m_inExclusionList;
};

#endif
