#include "QVRArgumentList.h"

#include <sstream>

QVRArgumentList* QVRArgumentList::GetInstance() {
    static QVRArgumentList instance;
    return &instance;
}

void QVRArgumentList::insertValue(const std::string& key, const std::string& value) {
    std::set<std::string>& values = m_options[key];
    if (value.empty()) return;
    std::istringstream stream(value);
    std::string piece;
    while (std::getline(stream, piece, ',')) values.insert(piece);
}

std::string QVRArgumentList::GetFirstValue(const std::string& key) const {
    const OptionMap::const_iterator it = m_options.find(key);
    if (it == m_options.end() || it->second.empty()) return std::string();
    return *it->second.begin();
}

void QVRArgumentList::Clear() {
    m_options.clear();
    m_singleOption.clear();
    m_programName.clear();
}
