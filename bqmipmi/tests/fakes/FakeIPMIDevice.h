#ifndef FAKEIPMIDEVICE_H
#define FAKEIPMIDEVICE_H

// A scripted management controller behind the IPMI device seam. Installs
// itself on construction and restores the real device on destruction.

#include <linux/ipmi.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "IIPMIDeviceIO.h"

class FakeIPMIDevice : public IIPMIDeviceIO {
  public:
    static constexpr int kFd = 42;

    struct SentRequest {
        unsigned char netfn;
        unsigned char cmd;
        std::vector<unsigned char> data;
        long msgid;
        unsigned int addrLen;
        int addrType;
        short channel;
        unsigned char lun;
    };

    // What one wait for readability reports.
    struct WaitStep {
        int result;  // -1 error, 0 time-out, >0 ready count
        bool ready;  // the device is in the ready set
    };

    // What one receive does.
    struct ReceiveStep {
        enum Kind { kAnswer, kForeignId, kError, kTruncated } kind;
        int error;                        // for kError
        std::vector<unsigned char> data;  // completion code first
    };

    FakeIPMIDevice() { mPrevious = IIPMIDeviceIO::SetForTesting(this); }
    ~FakeIPMIDevice() override { IIPMIDeviceIO::SetForTesting(mPrevious); }

    // Paths that open; every other path fails with ENOENT.
    std::map<std::string, int> openable;
    bool failSend = false;
    std::deque<WaitStep> waits;        // empty: readable at once
    std::deque<ReceiveStep> receives;  // empty: answer with defaultAnswer
    std::vector<unsigned char> defaultAnswer = {0x00};

    std::vector<std::string> opened;  // every path tried, in order
    std::vector<SentRequest> sent;
    std::vector<struct timeval> waitTimeouts;
    int receiveCalls = 0;
    std::vector<int> closed;

    // Convenience: the answer to the generation request with completion code
    // cc and generation byte g (response byte 8).
    static std::vector<unsigned char> GenerationAnswer(unsigned char cc, unsigned char g) {
        if (cc != 0) return {cc};
        return {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, g};
    }

    int Open(const char* path) override {
        opened.push_back(path);
        std::map<std::string, int>::const_iterator found = openable.find(path);
        if (found == openable.end()) {
            errno = ENOENT;
            return -1;
        }
        return found->second;
    }

    int Ioctl(int fd, unsigned long request, void* argument) override {
        if (fd != kFd) {
            errno = EBADF;
            return -1;
        }
        if (request == IPMICTL_SEND_COMMAND) return Send(*static_cast<struct ipmi_req*>(argument));
        if (request == IPMICTL_RECEIVE_MSG_TRUNC) return Receive(*static_cast<struct ipmi_recv*>(argument));
        errno = ENOTTY;
        return -1;
    }

    int WaitReadable(int, struct timeval* timeout, bool* fdReady) override {
        waitTimeouts.push_back(*timeout);
        // Like Linux, leave the time left behind: the caller must re-arm.
        timeout->tv_sec = 0;
        timeout->tv_usec = 0;
        WaitStep step = {1, true};
        if (!waits.empty()) {
            step = waits.front();
            waits.pop_front();
        }
        *fdReady = step.result > 0 && step.ready;
        if (step.result < 0) errno = EINTR;
        return step.result;
    }

    int Close(int fd) override {
        closed.push_back(fd);
        return 0;
    }

  private:
    int Send(const struct ipmi_req& request) {
        if (failSend) {
            errno = EIO;
            return -1;
        }
        SentRequest copy;
        copy.netfn = request.msg.netfn;
        copy.cmd = request.msg.cmd;
        copy.data.assign(request.msg.data, request.msg.data + request.msg.data_len);
        copy.msgid = request.msgid;
        copy.addrLen = request.addr_len;
        struct ipmi_system_interface_addr address;
        std::memcpy(&address, request.addr, sizeof(address));
        copy.addrType = address.addr_type;
        copy.channel = address.channel;
        copy.lun = address.lun;
        sent.push_back(copy);
        return 0;
    }

    int Receive(struct ipmi_recv& received) {
        ++receiveCalls;
        ReceiveStep step = {ReceiveStep::kAnswer, 0, defaultAnswer};
        if (!receives.empty()) {
            step = receives.front();
            receives.pop_front();
        }
        if (step.kind == ReceiveStep::kError) {
            errno = step.error;
            return -1;
        }
        const SentRequest& last = sent.back();
        received.recv_type = IPMI_RESPONSE_RECV_TYPE;
        received.msgid = step.kind == ReceiveStep::kForeignId ? last.msgid + 1000 : last.msgid;
        received.msg.netfn = static_cast<unsigned char>(last.netfn | 1);
        received.msg.cmd = last.cmd;
        size_t length = step.data.size();
        if (length > received.msg.data_len) length = received.msg.data_len;
        std::memcpy(received.msg.data, step.data.data(), length);
        received.msg.data_len = static_cast<unsigned short>(length);
        if (step.kind == ReceiveStep::kTruncated) {
            errno = EMSGSIZE;
            return -1;
        }
        return 0;
    }

    IIPMIDeviceIO* mPrevious;
};

#endif
