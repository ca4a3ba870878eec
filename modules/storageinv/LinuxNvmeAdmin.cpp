#include "LinuxNvmeAdmin.h"

#include <fcntl.h>
#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace svm {
namespace {

struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) ::close(fd);
    }
};

}  // namespace

int LinuxNvmeAdmin::Send(const std::string& device, const NvmeAdminCommand& command, unsigned timeoutMs,
                         std::vector<uint8_t>& data, std::string& error) {
    char what[80];
    std::snprintf(what, sizeof what, "ioctl NVME_IOCTL_ADMIN_CMD opcode 0x%02x cdw10 0x%x on ",
                  command.opcode, static_cast<unsigned>(command.cdw10));
    Descriptor dev{-1};
    do {
        dev.fd = ::open(device.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (dev.fd < 0 && errno == EINTR);
    if (dev.fd < 0) {
        const int err = errno;
        error = "open " + device + ": " + std::strerror(err);
        return err;
    }
    data.assign(command.size, 0);
    struct nvme_admin_cmd cmd;
    std::memset(&cmd, 0, sizeof cmd);
    cmd.opcode = command.opcode;
    cmd.nsid = command.nsid;
    cmd.addr = reinterpret_cast<uintptr_t>(data.data());
    cmd.data_len = command.size;
    cmd.cdw10 = command.cdw10;
    cmd.timeout_ms = timeoutMs;
    int rc;
    do {
        rc = ::ioctl(dev.fd, NVME_IOCTL_ADMIN_CMD, &cmd);
    } while (rc < 0 && errno == EINTR);
    if (rc < 0) {
        const int err = errno;
        error = what + device + ": " + std::strerror(err);
        return err;
    }
    if (rc > 0) {  // the controller's status field
        char status[32];
        std::snprintf(status, sizeof status, "status 0x%x", static_cast<unsigned>(rc));
        error = what + device + ": " + status;
        return EIO;
    }
    return 0;
}

}  // namespace svm
