#include "CQVRModuleManager.h"

#include <algorithm>
#include <sstream>

#include "CLogger.h"
#include "CQVRConfigParser.h"
#include "QVROptionKeys.h"

namespace {
const char* const kConfigFileName = "icconfig_new.json";
}  // namespace

void Tokenizer(const std::string& text, std::vector<std::string>& tokens, const char& delimiter) {
    std::istringstream stream(text);
    std::string field;
    while (std::getline(stream, field, delimiter)) {
        field.erase(std::remove(field.begin(), field.end(), ' '), field.end());
        tokens.push_back(field);
    }
}

CQVRModuleManager::CQVRModuleManager(const QVRArgumentList* args,
                                     const std::set<std::string>* generationNames,
                                     const std::string& moduleBaseDir)
    : m_argumentList(args),
      m_generationNames(generationNames),
      m_moduleBaseDir(moduleBaseDir),
      m_isDisableFilterSet(false),
      m_isCompTypeFilterSet(false),
      m_isParallelRunAllowed(true) {}

void CQVRModuleManager::InitFilter() {
    if (m_argumentList == nullptr) return;
    const QVRArgumentList::OptionMap options = m_argumentList->GetListOfOption();
    QVRArgumentList::OptionMap::const_iterator it = options.find(QVR_OPT_DISABLE);
    if (it != options.end()) {
        m_isDisableFilterSet = true;
        m_disableList = it->second;
    }
    it = options.find(QVR_OPT_COMPTYPE);
    if (it != options.end()) {
        m_isCompTypeFilterSet = true;
        m_compTypeFilter = it->second;
    }
}

void CQVRModuleManager::CheckForParallelRun() {
    if (m_argumentList == nullptr || !m_argumentList->HasOption(QVR_OPT_SERIALIZE)) return;
    if (m_argumentList->GetFirstValue(QVR_OPT_SERIALIZE) == "yes") m_isParallelRunAllowed = false;
}

bool CQVRModuleManager::IsPresentInDisableList(CQVRModuleDetail* record) {
    if (!m_isDisableFilterSet || record == nullptr) return false;
    return m_disableList.count(record->guid) != 0;
}

bool CQVRModuleManager::ApplyFilter(CQVRModuleDetail* record) {
    if (record == nullptr) return false;
    if (record->compType == "NA" || !m_isCompTypeFilterSet) return true;
    std::vector<std::string> tokens;
    Tokenizer(record->compType, tokens, ',');
    for (const std::string& token : tokens)
        if (m_compTypeFilter.count(token) != 0) return true;
    return false;
}

void CQVRModuleManager::PopulateMandatoryList(const std::string& section, CQVRModuleList* list,
                                              std::vector<CQVRModuleDetail*>& records) {
    for (CQVRModuleDetail* record : records) {
        if (record == nullptr) continue;
        record->workingDir = m_moduleBaseDir + record->workingDir;
        if (list != nullptr && section == "PreInstall")
            list->AddPreInventoryList(record);
        else if (list != nullptr && section == "PostInstall")
            list->AddPostInventoryList(record);
        else
            delete record;
    }
    records.clear();
}

void CQVRModuleManager::AddModuleToList(CQVRModuleDetail* record, CQVRModuleList* list) {
    if (record == nullptr || list == nullptr) return;
    record->workingDir = m_moduleBaseDir + record->workingDir;
    if (m_isParallelRunAllowed && record->isParallelRunSupported != "false") {
        if (record->priority == "1")
            list->AddPriorityList(record);
        else
            list->AddModuleList(record);
    } else {
        // With the serialize switch on, the priority mark is ignored on purpose.
        list->AddSerialRunModuleList(record);
    }
}

void CQVRModuleManager::PlaceGenerationRecords(CQVRModuleList* list,
                                               std::vector<CQVRModuleDetail*>& records) {
    for (CQVRModuleDetail* record : records) {
        if (record == nullptr) continue;
        if (list != nullptr && !IsPresentInDisableList(record) && ApplyFilter(record))
            AddModuleToList(record, list);
        else
            delete record;
    }
    records.clear();
}

int CQVRModuleManager::PopulateList(CQVRModuleList* list, std::vector<CQVRModuleDetail*>& records) {
    CheckForParallelRun();
    PlaceGenerationRecords(list, records);
    return 0;
}

int CQVRModuleManager::PopulateModuleList(CQVRModuleList* list) {
    InitFilter();
    CQVRConfigParser parser;
    if (!parser.Initilaize(kConfigFileName)) {
        CLogger::GetInstance()->log(
            __FILE__, __LINE__,
            "CQVRModuleManager::PopulateModuleList : \t\t\t\tUnable to load the module "
            "configuration file.");
        return 2;
    }
    std::vector<CQVRModuleDetail*> pre;
    std::vector<CQVRModuleDetail*> post;
    std::vector<CQVRModuleDetail*> gen;
    // A missing or empty section contributes nothing: the results are not checked.
    parser.ParseConfig(m_generationNames, "PreInstall", pre);
    PopulateMandatoryList("PreInstall", list, pre);
    parser.ParseConfig(m_generationNames, "PostInstall", post);
    PopulateMandatoryList("PostInstall", list, post);
    parser.ParseConfig(m_generationNames, "Generation", gen);
    CheckForParallelRun();
    PlaceGenerationRecords(list, gen);
    return 0;
}
