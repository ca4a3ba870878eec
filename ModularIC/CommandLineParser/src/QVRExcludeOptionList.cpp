#include "QVRExcludeOptionList.h"

#include "QVROptionKeys.h"

QVRExcludeOptionList::QVRExcludeOptionList() { m_separators[QVR_OPT_LIST] = ' '; }

QVRExcludeOptionList& QVRExcludeOptionList::GetInstance() {
    static QVRExcludeOptionList List;
    return List;
}

char QVRExcludeOptionList::GetSeparator(const std::string& key) const {
    const std::map<std::string, char>::const_iterator it = m_separators.find(key);
    return it == m_separators.end() ? ' ' : it->second;
}
