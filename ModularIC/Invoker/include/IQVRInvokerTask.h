#ifndef IQVRINVOKERTASK_H
#define IQVRINVOKERTASK_H

#include "IQVRThreadPoolTask.h"

// A pool task that handles one configured module.
class IQVRInvokerTask : public IQVRThreadPoolTask {
public:
    ~IQVRInvokerTask() override = default;
};

#endif
