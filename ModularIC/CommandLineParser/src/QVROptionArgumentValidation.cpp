#include "QVROptionArgumentValidation.h"

#include "QVRResultCodes.h"

QVROptionArgumentValidation::QVROptionArgumentValidation(IQVRFileSystem& fileSystem)
    : m_processArgument(fileSystem),
      m_invalidOption(false),
      m_specialSingleOption(false),
      m_singleOptionFound(false),
      m_noOption(false) {
    for (const auto& entry : m_processArgument.GetFactory().GetOptions())
        m_optionObjects[entry.first] = entry.second.get();
}

IQVROptions* QVROptionArgumentValidation::FindOption(const std::string& key) const {
    const std::map<std::string, IQVROptions*>::const_iterator it = m_optionObjects.find(key);
    return it == m_optionObjects.end() ? nullptr : it->second;
}

int QVROptionArgumentValidation::ProcessArgument(int argc, char** argv, QVRArgumentList* list) {
    if (argc <= 1) {
        m_noOption = true;
        return QVR_RESULT_SUCCESS;
    }
    if (list == nullptr) return QVR_RESULT_COMPLETE_FAILURE;

    const unsigned int parsed = m_processArgument.ParseCmdLine(argc, argv, m_options);
    list->SetProgramName(m_processArgument.GetProgramName());
    if (parsed != QVR_RESULT_SUCCESS) {
        m_invalidOption = true;
        return static_cast<int>(parsed);
    }

    const unsigned int prerequisite = ValidatePrerequisite();
    if (prerequisite != QVR_RESULT_SUCCESS) return static_cast<int>(prerequisite);

    if (SingleOption()) {
        list->insertValue(m_singleOptionKey, m_options[m_singleOptionKey]);
        list->SetSingleOption(m_singleOptionKey);
        return QVR_RESULT_SUCCESS;
    }
    if (m_invalidOption) return QVR_RESULT_INVALID_OPTION;

    const unsigned int validated = Validate();
    if (validated != QVR_RESULT_SUCCESS) return static_cast<int>(validated);

    for (const auto& entry : m_options) list->insertValue(entry.first, entry.second);
    return QVR_RESULT_SUCCESS;
}

unsigned int QVROptionArgumentValidation::ValidatePrerequisite() const {
    for (const auto& entry : m_options) {
        const IQVROptions* option = FindOption(entry.first);
        if (option == nullptr) {
            m_invalidOption = true;
            return QVR_RESULT_INVALID_OPTION;
        }
        if (option->IsRequiredValue() && entry.second.empty()) return QVR_RESULT_REQUIRES_ARGUMENT;
        if (!option->IsRequiredValue() && !entry.second.empty()) return QVR_RESULT_SHOULD_NOT_HAVE_ARGUMENT;
        const std::string& dependent = option->GetDependentOptionKey();
        if (!dependent.empty() && m_options.count(dependent) == 0) return QVR_RESULT_DEPENDENT_OPTION_MISSING;
        const std::set<std::string> companions = option->GetDependentOptions();
        if (!companions.empty() && !ValidateOptionalOptions(entry.first, companions)) {
            m_invalidOption = true;
            return QVR_RESULT_INVALID_OPTION;
        }
    }
    return QVR_RESULT_SUCCESS;
}

bool QVROptionArgumentValidation::ValidateOptionalOptions(std::string key,
                                                          std::set<std::string> companions) const {
    // Keys after the option's own are deliberately not examined.
    for (const auto& entry : m_options) {
        if (entry.first == key) return true;
        if (companions.count(entry.first) == 0) return false;
    }
    return true;
}

bool QVROptionArgumentValidation::SingleOption() const {
    for (const auto& entry : m_options) {
        const IQVROptions* option = FindOption(entry.first);
        if (option == nullptr) {
            m_invalidOption = true;
            m_errorText = "Invalid option " + entry.first;
            return false;
        }
        if (option->IsSingleOption()) {
            m_singleOptionKey = entry.first;
            m_singleOptionFound = true;
            if (option->HasSingleOptionMark()) m_specialSingleOption = true;
            return true;
        }
    }
    return false;
}

unsigned int QVROptionArgumentValidation::Validate() const {
    for (const auto& entry : m_options) {
        IQVROptions* option = FindOption(entry.first);
        if (option == nullptr) continue;
        const unsigned int result = option->Validate(entry.second);
        if (result != QVR_RESULT_SUCCESS) return result;
    }
    return QVR_RESULT_SUCCESS;
}
