#include "QVRProcessArgument.h"

#include <sstream>

#include "CLogger.h"
#include "QVROptionKeys.h"
#include "QVRResultCodes.h"

QVRProcessArgument::QVRProcessArgument(IQVRFileSystem& fileSystem)
    : m_factory(fileSystem),
      m_excludeList(QVRExcludeOptionList::GetInstance()),
      m_optionPrefixes{'-', '/'},
      m_ignoreRest(false),
      m_inExclusionList(false) {}

unsigned int QVRProcessArgument::ParseCmdLine(int argc, char** argv, OptionMap& options) {
    if (argc < 1 || argv == nullptr || argv[0] == nullptr) return QVR_RESULT_SUCCESS;
    const std::string program(argv[0]);
    const std::string::size_type slash = program.rfind('/');
    m_programName = slash == std::string::npos ? program : program.substr(slash + 1);

    for (int i = 1; i < argc && argv[i] != nullptr; ++i) {
        std::string word(argv[i]);
        const unsigned int result = ProcessEachCmd(word, options);
        if (result != QVR_RESULT_SUCCESS) return result;
        if (m_ignoreRest) break;
    }
    return QVR_RESULT_SUCCESS;
}

unsigned int QVRProcessArgument::ProcessEachCmd(std::string& word, OptionMap& options) {
    const std::string::size_type equals = word.find('=');
    const bool hasValue = equals != std::string::npos;
    const std::string spelling = hasValue ? word.substr(0, equals) : word;
    std::string value = hasValue ? word.substr(equals + 1) : std::string();

    std::string key;
    if (!m_factory.GetOptionKey(spelling, key)) {
        CLogger::GetInstance()->log(__FILE__, __LINE__, spelling + " Is not supported");
        return QVR_RESULT_INVALID_OPTION;
    }

    if (m_excludeList.IsExcluded(key)) {
        // A list inside a list would hand the same text back forever.
        if (m_inExclusionList) return QVR_RESULT_INVALID_OPTION;
        std::string list = hasValue ? value : word;
        m_inExclusionList = true;
        const unsigned int result = CheckForExclusionList(&list, options);
        m_inExclusionList = false;
        return result;
    }

    if (hasValue) {
        if (key == QVR_OPT_HELP || key == QVR_OPT_VERSION || key == QVR_OPT_PROGRESS)
            return QVR_RESULT_INVALID_OPTION;
        if (value.empty()) return QVR_RESULT_REQUIRES_ARGUMENT;
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
            value = value.substr(1, value.size() - 2);
    }

    if (key == QVR_OPT_BDIR) {
        // Values are split at ",": the directory would not be the one named.
        if (value.find(',') != std::string::npos) return QVR_RESULT_BDIR_PATH_INVALID;
        if (!value.empty()) PopulteBaseDir(value);
        return QVR_RESULT_SUCCESS;
    }

    if ((key == QVR_OPT_OUT || key == QVR_OPT_LOG) && !value.empty()) AppendPathIfRequired(value);

    return PopulateArgumentList(key, value, options) ? QVR_RESULT_SUCCESS : QVR_RESULT_INVALID_OPTION;
}

unsigned int QVRProcessArgument::CheckForExclusionList(std::string* value, OptionMap& options) {
    if (value == nullptr) return QVR_RESULT_SUCCESS;
    std::istringstream stream(*value);
    std::string word;
    while (stream >> word) {
        const unsigned int result = ProcessEachCmd(word, options);
        if (result != QVR_RESULT_SUCCESS) return result;
    }
    return QVR_RESULT_SUCCESS;
}

bool QVRProcessArgument::PopulateArgumentList(std::string& key, std::string& value, OptionMap& options) {
    if (m_ignoreRest) return true;

    const OptionMap::iterator existing = options.find(key);
    if (existing != options.end()) {
        if (key == QVR_OPT_OUT || key == QVR_OPT_OUTPUTFORMAT || key == QVR_OPT_LOG || key == QVR_OPT_ENCODE)
            return false;
        existing->second += "," + value;
    } else {
        options[key] = value;
    }

    if (key == QVR_OPT_HELP || key == QVR_OPT_VERSION) {
        setIgnoreRestOption();
        return options.size() < 2;
    }
    return true;
}

void QVRProcessArgument::AppendPathIfRequired(std::string& path) const {
    if (m_baseDir.empty() || path.find('/') != std::string::npos) return;
    path = m_baseDir + "/" + path;
}
