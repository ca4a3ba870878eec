#ifndef QVREXCLUDEOPTIONLIST_H
#define QVREXCLUDEOPTIONLIST_H

#include <map>
#include <string>

// Keys whose value is itself a list of options, each with the character that
// separates them: only "list", separated by blanks.
class QVRExcludeOptionList {
public:
    // The process-wide list.
    static QVRExcludeOptionList& GetInstance();

    bool IsExcluded(const std::string& key) const { return m_separators.count(key) != 0; }
    // The separator of an excluded key; a blank for any other.
    char GetSeparator(const std::string& key) const;

private:
    QVRExcludeOptionList();

    std::map<std::string, char> m_separators;
};

#endif
