#ifndef IQVRMODULEINVOKER_H
#define IQVRMODULEINVOKER_H

// Runs the modules of one phase of a collection run.
class IQVRModuleInvoker {
public:
    virtual ~IQVRModuleInvoker() = default;
    // Starts the phase's modules (to completion, or queued on a pool).
    virtual bool Process() = 0;
    // Waits for whatever Process left running.
    virtual bool EndProcess() = 0;
};

#endif
