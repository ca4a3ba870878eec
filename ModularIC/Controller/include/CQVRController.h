#ifndef CQVRCONTROLLER_H
#define CQVRCONTROLLER_H

#include <cstdint>
#include <set>
#include <string>

class CLockManager;
class IQVRGenerationSource;
class IQVRShmApi;
class CQVRICInvoker;
class CQVRModuleList;
class QVRArgumentList;
class QVRDataModel;
class QVRDataModelManager;

// One collection run, in its fixed order: command line, single option, the
// single-instance lock or the progress query, system generation, module lists,
// data model, invocation, output. Expected outcomes are returned as result
// codes; unexpected ones are thrown as CQVRICException or
// CQVRBadAllocException, each phase adding its own frame. Main thread only.
class CQVRController {
public:
    // Takes the start directory and creates the module list and the real lock
    // manager. Throws CQVRBadAllocException when an allocation fails.
    CQVRController();
    // The same with the given lock manager, which the controller takes over,
    // the given generation source (borrowed; null asks the management
    // controller) and progress channel (borrowed; null is the machine's shared
    // memory).
    explicit CQVRController(CLockManager* lockManager, IQVRGenerationSource* generations = nullptr,
                            IQVRShmApi* progress = nullptr);
    CQVRController(const CQVRController&) = delete;
    CQVRController& operator=(const CQVRController&) = delete;
    // Deletes invoker, manager, data model and module list, then releases a held
    // lock, then deletes the lock manager.
    ~CQVRController();

    // Runs the collection; 0 or a result code.
    unsigned int GetICInventory(int argc, char** argv);

    // The program's short name, "sorvik", used in the usage text.
    static std::string GetProgramName();
    void SetLockFileID(int handle) { m_lockFileID = handle; }
    int GetLockFileID() const { return m_lockFileID; }

private:
    unsigned int InitCommandLineParser(int argc, char** argv);
    // True when a single option was given; help and version are printed.
    bool CheckForSingleOption();
    // Takes the lock; 0 to go on with the collection, otherwise the run's result.
    unsigned int CheckForProgressOption();
    void PopulateSystemGeneration();
    void PopulateModuleList();
    void InitDataModel();
    void InitICInvoker();
    unsigned int WriteOutput();
    // The progress of the instance that holds the lock: 48 written, 50 not.
    unsigned int WriteICProgress();
    // What a signal must undo before the process ends: the held lock, and the
    // progress segment when progress is given.
    void ArmInterruptCleanup(QVRDataModelManager* progress);

    QVRArgumentList* m_pArgumentList;
    CQVRModuleList* m_pModuleList;
    QVRDataModel* m_pDataModel;
    QVRDataModelManager* m_pDataModelManager;
    CQVRICInvoker* m_pICInvoker;
    std::set<std::string> m_systemGenerations;
    std::string m_startDirectory;
    CLockManager* m_pLockManager;
    IQVRGenerationSource* m_pGenerations;
    IQVRShmApi* m_pProgress;
    int32_t m_lockFileID;
};

#endif
