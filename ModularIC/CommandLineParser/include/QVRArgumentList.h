#ifndef QVRARGUMENTLIST_H
#define QVRARGUMENTLIST_H

#include <map>
#include <set>
#include <string>

// The parsed command line: option key -> ordered set of values (split at ","),
// the single option (help or version) when one was given, and the program name.
// One process-wide instance; tests may build their own.
class QVRArgumentList {
public:
    typedef std::map<std::string, std::set<std::string>> OptionMap;

    // The process-wide list, created on first use and destroyed at exit.
    static QVRArgumentList* GetInstance();

    // An empty value enters the key with an empty set; otherwise the value is
    // split at "," and every piece is inserted.
    void insertValue(const std::string& key, const std::string& value);

    const OptionMap& GetListOfOption() const { return m_options; }
    bool HasOption(const std::string& key) const { return m_options.count(key) != 0; }
    // The smallest value of the option, or "" when it is absent or has none.
    std::string GetFirstValue(const std::string& key) const;

    void SetSingleOption(const std::string& key) { m_singleOption = key; }
    const std::string& GetSingleOption() const { return m_singleOption; }
    void SetProgramName(const std::string& name) { m_programName = name; }
    const std::string& GetProgramName() const { return m_programName; }

    void Clear();

private:
    OptionMap m_options;
    std::string m_singleOption;
    std::string m_programName;
};

#endif
