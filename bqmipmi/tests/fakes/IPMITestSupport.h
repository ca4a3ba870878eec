#ifndef IPMITESTSUPPORT_H
#define IPMITESTSUPPORT_H

#include <linux/ipmi.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <set>
#include <string>
#include <vector>

#include "BQMIPMIData.h"
#include "BaseUtilsTestSupport.h"  // the shell and OS probe fakes, temporary directories
#include "IIPMIDeviceIO.h"

// A scripted management controller behind the device node.
class FakeIPMIDevice : public IIPMIDeviceIO {
public:
    static constexpr int kFd = 42;
    struct Sent {
        std::vector<int> head;  // network function, command, address length, type, channel, LUN
        std::vector<unsigned char> data;
        long msgid;
    };
    // One receive: the answer's data (completion code first), under the id sent
    // or a foreign one, or a failure with errno (EMSGSIZE: truncated answer).
    struct Reply {
        std::vector<unsigned char> data;
        bool foreignId = false;
        int error = 0;
    };

    // The generation answer: completion code cc, generation byte g (response byte 8).
    static std::vector<unsigned char> Generation(unsigned char cc, unsigned char g) {
        return cc != 0 ? std::vector<unsigned char>{cc} : std::vector<unsigned char>{0, 1, 2, 3, 4, 5, g};
    }

    std::set<std::string> openable = {"/dev/ipmi0"};
    bool failSend = false;
    std::deque<int> waits;      // -1 error, 0 time-out, 1 readable, 2 only another descriptor; empty: 1
    std::deque<Reply> replies;  // empty: defaultAnswer
    std::vector<unsigned char> defaultAnswer = {0x00};
    std::vector<std::string> opened;
    std::vector<Sent> sent;
    std::vector<long> waitTimeouts;  // in microseconds
    std::vector<int> closed;
    int receives = 0;

    int Open(const char* path) override {
        opened.push_back(path);
        errno = ENOENT;
        return openable.count(path) ? kFd : -1;
    }
    int WaitReadable(int, struct timeval* timeout, bool* fdReady) override {
        waitTimeouts.push_back(timeout->tv_sec * 1000000L + timeout->tv_usec);
        *timeout = {0, 0};  // as Linux leaves it: the caller must re-arm
        const int step = waits.empty() ? 1 : waits.front();
        if (!waits.empty()) waits.pop_front();
        *fdReady = step == 1;
        errno = EINTR;
        return step < 0 ? -1 : step > 0 ? 1 : 0;
    }
    int Close(int fd) override { return closed.push_back(fd), 0; }
    int Ioctl(int fd, unsigned long request, void* argument) override {
        errno = EIO;
        if (fd != kFd || (request == IPMICTL_SEND_COMMAND && failSend)) return -1;
        if (request == IPMICTL_SEND_COMMAND) {
            const struct ipmi_req& r = *static_cast<struct ipmi_req*>(argument);
            const auto* address = reinterpret_cast<const struct ipmi_system_interface_addr*>(r.addr);
            sent.push_back({{r.msg.netfn, r.msg.cmd, int(r.addr_len), address->addr_type, address->channel,
                             address->lun},
                            std::vector<unsigned char>(r.msg.data, r.msg.data + r.msg.data_len),
                            r.msgid});
            return 0;
        }
        struct ipmi_recv& received = *static_cast<struct ipmi_recv*>(argument);
        ++receives;
        Reply reply{defaultAnswer};
        if (!replies.empty()) reply = replies.front(), replies.pop_front();
        if (reply.error != 0 && reply.error != EMSGSIZE) return errno = reply.error, -1;
        received.msgid = sent.back().msgid + (reply.foreignId ? 1000 : 0);
        received.msg.netfn = static_cast<unsigned char>(sent.back().head[0] | 1);
        received.msg.cmd = sent.back().head[1];
        received.msg.data_len =
            static_cast<unsigned short>(std::min<size_t>(reply.data.size(), received.msg.data_len));
        std::memcpy(received.msg.data, reply.data.data(), received.msg.data_len);
        return reply.error != 0 ? (errno = reply.error, -1) : 0;
    }
};

// A fresh temporary directory as the current directory for the object's lifetime.
class ScopedWorkingDirectory : public ScopedTempDir {
public:
    ScopedWorkingDirectory() : mPrevious(std::filesystem::current_path()) {
        if (Ok()) std::filesystem::current_path(Path());
    }
    ~ScopedWorkingDirectory() {
        std::error_code ignored;
        std::filesystem::current_path(mPrevious, ignored);
    }
    bool Ok() const { return !Path().empty(); }

private:
    std::filesystem::path mPrevious;
};

// The generation request: network function 0x30, command 0xBD, no data, 9 bytes expected.
inline _BQMIPMICommandData GenerationRequest(_BQMIPMIConfiguration* configuration = nullptr) {
    return _BQMIPMICommandData{configuration, 2, 9, {0x30, 0xBD}, {}};
}

#endif
