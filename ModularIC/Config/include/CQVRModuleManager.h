#ifndef CQVRMODULEMANAGER_H
#define CQVRMODULEMANAGER_H

#include <set>
#include <string>
#include <vector>

#include "CQVRModuleDetail.h"
#include "CQVRModuleList.h"
#include "QVRArgumentList.h"

// Turns the module configuration file ("icconfig_new.json" in the current
// directory) into the run's five phase lists, applying the disable list, the
// component-type filter, the serialize switch and the generation names.
// Borrows the argument list and the generation-name set. Not thread-safe.
class CQVRModuleManager {
public:
    CQVRModuleManager(const QVRArgumentList* args, const std::set<std::string>* generationNames,
                      const std::string& moduleBaseDir);

    // The whole selection. 0 on success; 2 when the configuration file could
    // not be loaded (the lists are untouched then). Every record read lands in
    // exactly one list or is deleted.
    int PopulateModuleList(CQVRModuleList* list);

    // Reads "disable" and "comptype" from the arguments.
    void InitFilter();
    // Parallel running stays allowed unless the smallest "serialize" value is
    // exactly "yes".
    void CheckForParallelRun();
    // Whether the disable list is set and holds the record's GUID.
    bool IsPresentInDisableList(CQVRModuleDetail* record);
    // The component-type filter: true keeps the record.
    bool ApplyFilter(CQVRModuleDetail* record);
    // Prefixes each record's working directory with the base directory and
    // appends it to the pre-install ("PreInstall") or post-install
    // ("PostInstall") list, unchecked. Takes every record: one that no list
    // takes (another section, or a null list) is deleted. records is emptied.
    void PopulateMandatoryList(const std::string& section, CQVRModuleList* list,
                               std::vector<CQVRModuleDetail*>& records);
    // Prefixes the working directory and appends the record to the priority,
    // module or serial-run list. Nothing (the caller keeps the record) when
    // either pointer is null.
    void AddModuleToList(CQVRModuleDetail* record, CQVRModuleList* list);
    // CheckForParallelRun, then the disable check, the filter and placement
    // of each record. Takes every record (skipped ones are deleted); records is
    // emptied. Returns 0.
    int PopulateList(CQVRModuleList* list, std::vector<CQVRModuleDetail*>& records);

    bool IsDisableFilterSet() const { return m_isDisableFilterSet; }
    bool IsCompTypeFilterSet() const { return m_isCompTypeFilterSet; }
    bool IsParallelRunAllowed() const { return m_isParallelRunAllowed; }

private:
    // The placement of generation records shared by PopulateModuleList and
    // PopulateList.
    void PlaceGenerationRecords(CQVRModuleList* list, std::vector<CQVRModuleDetail*>& records);

    const QVRArgumentList* m_argumentList;
    const std::set<std::string>* m_generationNames;
    std::string m_moduleBaseDir;
    bool m_isDisableFilterSet;
    bool m_isCompTypeFilterSet;
    std::set<std::string> m_disableList;
    std::set<std::string> m_compTypeFilter;
    bool m_isParallelRunAllowed;
};

// Splits text at delimiter (two delimiters in a row give an empty field, a
// trailing delimiter none, an empty text none) and removes every space from
// each field before appending it, even when it ends up empty.
void Tokenizer(const std::string& text, std::vector<std::string>& tokens, const char& delimiter);

#endif
