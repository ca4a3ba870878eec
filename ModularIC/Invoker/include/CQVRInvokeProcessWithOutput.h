#ifndef CQVRINVOKEPROCESSWITHOUTPUT_H
#define CQVRINVOKEPROCESSWITHOUTPUT_H

#include <cstdint>
#include <vector>

#include "CQVRModuleDetail.h"
#include "IQVRInvokerTask.h"
#include "IQVRModuleInvoker.h"
#include "QVRCProcess.h"
#include "QVRCThreadPool.h"

class QVRDataModelManager;

// Runs a phase's modules as tasks on its own thread pool and feeds each module's
// output to the data model manager (priority, parallel and serial phases).
class CQVRInvokeProcessWithOutput : public IQVRModuleInvoker {
public:
    // Both are borrowed; the list must outlive the invoker. A non-zero
    // threadCount starts a pool of that many workers; raisedPriority is passed
    // to it.
    CQVRInvokeProcessWithOutput(QVRDataModelManager* dataModelManager,
                                const std::vector<CQVRModuleDetail*>& modules, unsigned long threadCount,
                                bool raisedPriority,
                                unsigned int timeoutSeconds = QVR_MODULE_TIMEOUT_SECONDS);
    // Stops the pool (waiting for its tasks) and frees the tasks.
    ~CQVRInvokeProcessWithOutput() override;

    // Queues one task per module in list order: "lib" a library task, "cli" an
    // executable task, any other type a null task, which stops one worker.
    // Returns at once; false when there is no running pool. When the pool
    // could start no thread at all, every executable module gets its failure
    // entry instead.
    bool Process() override;
    // Waits until every queued task has run and the workers have ended, then
    // frees the tasks. True without a pool.
    bool EndProcess() override;

    bool IsPoolReady() const { return m_poolReady; }
    unsigned long GetThreadCount() const { return static_cast<unsigned long>(m_threadCount); }

private:
    // Gives each executable module its failure entry without running it.
    void ReportUnrunnable();
    void FreeTasks();

    QVRDataModelManager* m_pDataModelManager;
    const std::vector<CQVRModuleDetail*>& m_modules;
    uint64_t m_threadCount;
    QVRCThreadPool* m_pThreadPool;
    bool m_poolReady;
    unsigned int m_timeoutSeconds;
    // Tasks made by Process; the pool only borrows them.
    std::vector<IQVRInvokerTask*> m_tasks;
};

#endif
