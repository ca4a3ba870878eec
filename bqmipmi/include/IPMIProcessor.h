#ifndef IPMIPROCESSOR_H
#define IPMIPROCESSOR_H

#include "CPlatformLayer.h"
#include "IIPMICommandProcessor.h"
#include "IIPMIDeviceIO.h"

class CBQMIPMICommandData;

// Message identifier of the next request; process-wide, starts at 1, taken and
// incremented for every request sent. Requests are expected one at a time.
extern long gnMsgID;

// Talks to the management controller through the Linux IPMI device driver
// ("/dev/ipmi0", "/dev/ipmi/0" or "/dev/ipmidev/0"). Device calls go through
// the given device, pauses through the given platform (both borrowed). Owns
// the open descriptor; one request at a time.
class IPMIProcessor : public IIPMICommandProcessor {
public:
    explicit IPMIProcessor(IIPMIDeviceIO& device = IIPMIDeviceIO::Real(),
                           IPlatformImpl& platform = CPlatformLayer::Real());
    // Closes the device if it is still open.
    ~IPMIProcessor() override;
    IPMIProcessor(const IPMIProcessor&) = delete;
    IPMIProcessor& operator=(const IPMIProcessor&) = delete;

    // Process, repeated while the completion code is transient and retries are
    // left (the command's retry count and interval). 0 when an answer was
    // received, whatever its completion code; otherwise Process's status.
    int ExecuteCommand(CBQMIPMICommandData& command) override;
    // Opens the first device node that opens, in up to five passes a second
    // apart. 0, or 320 after writing "Can't open IPMI device\n" to stderr.
    int Initialize() override;

    // Sends one request and waits for the answer with the same message id,
    // at most retry-count times. 0 with the response filled in, else 320. A
    // failed send leaves completion code 1, a truncated answer 0x10. A command
    // without a configuration uses 60/5/5/50.
    int Process(CBQMIPMICommandData& command);
    // Closes the device.
    void Release();
    // Logs the request bytes and the response bytes in hexadecimal.
    void LogIPMIResponse(CBQMIPMICommandData& command);

    // The open descriptor, -1 when closed.
    int GetFileDescriptor() const { return mFd; }

private:
    int mFd;
    IIPMIDeviceIO& mDevice;
    IPlatformImpl& mPlatform;
};

#endif
