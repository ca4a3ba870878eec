#ifndef CQVRICINVOKER_H
#define CQVRICINVOKER_H

#include <cstdint>
#include <vector>

#include "CQVRModuleDetail.h"
#include "CQVRModuleList.h"
#include "IQVRModuleInvoker.h"
#include "QVRCProcess.h"

class QVRArgumentList;
class QVRDataModelManager;

// The phases of a collection run; each value is also its invoker's slot.
enum QVR_IC_INVOKER_TASKS {
    QVR_IC_INVOKER_PRE_INSTALL = 0,
    QVR_IC_INVOKER_PRIORITY = 1,
    QVR_IC_INVOKER_PARALLEL = 2,
    QVR_IC_INVOKER_SERIAL = 3,
    QVR_IC_INVOKER_POST_INSTALL = 4,
};

// Runs the selected modules of one collection run: pre-install modules one by
// one, then the priority, parallel and serial phases side by side on their own
// pools (eight worker threads at most in all), then post-install modules. Runs
// on the controller's thread; owns its five phase invokers.
class CQVRICInvoker {
public:
    static constexpr unsigned long kThreadBudget = 8;

    // All three are borrowed and must outlive the invoker. Builds the phase
    // invokers (starting their pools) and publishes the number of inventory
    // components to the manager. Throws CQVRICException or CQVRBadAllocException.
    // timeoutSeconds limits each module run.
    CQVRICInvoker(const QVRArgumentList* argumentList, QVRDataModelManager* dataModelManager,
                  CQVRModuleList* moduleList, unsigned int timeoutSeconds = QVR_MODULE_TIMEOUT_SECONDS);
    CQVRICInvoker(const CQVRICInvoker&) = delete;
    CQVRICInvoker& operator=(const CQVRICInvoker&) = delete;
    virtual ~CQVRICInvoker();

    // Computes the thread counts and the total, then fills the five slots.
    void InitModuleInvoker();
    // Creates the invoker of one phase into its slot (replacing any there).
    // Values outside the five phases do nothing. Throws CQVRBadAllocException
    // when the invoker cannot be allocated.
    void InitTask(QVR_IC_INVOKER_TASKS task, const std::vector<CQVRModuleDetail*>& modules,
                  unsigned long threadCount, bool raisedPriority);
    // The thread budget for the current module list; also stores the total.
    // Returns the parallel thread count when the priority list alone fills the
    // budget, otherwise the priority and parallel list sizes added.
    unsigned long FindNumThreadsPerInvoker(unsigned long& priorityThreads, unsigned long& parallelThreads,
                                           unsigned long& serialThreads);
    // Tells the manager how many modules will report inventory.
    void WriteInitProgress();
    // Runs the phases in order and waits for all of them. 0.
    unsigned int ProcessInventory();

    // The budget rule itself, for list sizes P, M and S.
    static void ComputeThreadBudget(unsigned long priorityCount, unsigned long parallelCount,
                                    unsigned long serialCount, unsigned long& priorityThreads,
                                    unsigned long& parallelThreads, unsigned long& serialThreads);

    uint64_t GetTotalInvComponents() const { return m_totalInvComponents; }
    IQVRModuleInvoker* GetModuleInvoker(QVR_IC_INVOKER_TASKS task) const;

private:
    // Allocation of the phase invokers without throwing; null on failure.
    IQVRModuleInvoker* NewOnlyProcessInvoker(const std::vector<CQVRModuleDetail*>& modules);
    IQVRModuleInvoker* NewOutputInvoker(const std::vector<CQVRModuleDetail*>& modules,
                                        unsigned long threadCount, bool raisedPriority);
    void DestroyInvokers();
    const CQVRModuleList& Modules() const;

    [[maybe_unused]] const QVRArgumentList* m_pArgumentList;
    QVRDataModelManager* m_pDataModelManager;
    CQVRModuleList* m_pModuleList;
    uint64_t m_totalInvComponents;
    std::vector<IQVRModuleInvoker*>* m_pInvokers;
    unsigned int m_timeoutSeconds;
};

#endif
