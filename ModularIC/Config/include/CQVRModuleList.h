#ifndef CQVRMODULELIST_H
#define CQVRMODULELIST_H

#include <vector>

#include "CQVRModuleDetail.h"

// The five phase lists of a run, in configuration-file order. Owns every record
// it holds.
class CQVRModuleList {
public:
    typedef std::vector<CQVRModuleDetail*> List;

    CQVRModuleList() = default;
    CQVRModuleList(const CQVRModuleList&) = delete;
    CQVRModuleList& operator=(const CQVRModuleList&) = delete;
    ~CQVRModuleList();

    void AddPreInventoryList(CQVRModuleDetail* module) { m_preInstall.push_back(module); }
    void AddPriorityList(CQVRModuleDetail* module) { m_priority.push_back(module); }
    void AddModuleList(CQVRModuleDetail* module) { m_modules.push_back(module); }
    void AddSerialRunModuleList(CQVRModuleDetail* module) { m_serialRun.push_back(module); }
    void AddPostInventoryList(CQVRModuleDetail* module) { m_postInstall.push_back(module); }

    const List& GetPreInstallList() const { return m_preInstall; }
    const List& GetPriorityInstallList() const { return m_priority; }
    const List& GetModuleList() const { return m_modules; }
    const List& GetSerialRunModuleList() const { return m_serialRun; }
    const List& GetPostInstallList() const { return m_postInstall; }

    unsigned long GetSizePreInstallList() const { return m_preInstall.size(); }
    unsigned long GetSizePriorityList() const { return m_priority.size(); }
    unsigned long GetSizeModuleList() const { return m_modules.size(); }
    unsigned long GetSizeSerialRunModuleList() const { return m_serialRun.size(); }
    unsigned long GetSizePostInstallList() const { return m_postInstall.size(); }

    // Deletes every record of the list and empties it.
    static void ClearModuleList(List& list);

private:
    List m_preInstall;
    List m_priority;
    List m_modules;
    List m_serialRun;
    List m_postInstall;
};

#endif
