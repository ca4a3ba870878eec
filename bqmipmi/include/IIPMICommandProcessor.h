#ifndef IIPMICOMMANDPROCESSOR_H
#define IIPMICOMMANDPROCESSOR_H

class CBQMIPMICommandData;

// Sends IPMI requests to the management controller.
class IIPMICommandProcessor {
public:
    virtual ~IIPMICommandProcessor() {}
    // Sends the request and waits for its answer, retrying on transient
    // completion codes. 0 when an answer was received (its completion code is
    // in the response), 320 otherwise.
    virtual int ExecuteCommand(CBQMIPMICommandData& command) = 0;
    // Opens the device. 0 on success, 320 otherwise.
    virtual int Initialize() = 0;
};

#endif
