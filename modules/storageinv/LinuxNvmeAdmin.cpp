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

const uint8_t kGetLogPage = 0x02;
const uint32_t kAllNamespaces = 0xFFFFFFFF;

struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) ::close(fd);
    }
};

}  // namespace

int LinuxNvmeAdmin::GetLogPage(const std::string& device, uint8_t logId, size_t size,
                               std::vector<uint8_t>& page, std::string& error) {
    // The transfer is counted in dwords, at most 4096 of them in the lower count.
    if (size == 0 || size % 4 != 0 || size > 16384) {
        error = "invalid log page size " + std::to_string(size);
        return EINVAL;
    }
    Descriptor dev{-1};
    do {
        dev.fd = ::open(device.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (dev.fd < 0 && errno == EINTR);
    if (dev.fd < 0) {
        const int err = errno;
        error = "open " + device + ": " + std::strerror(err);
        return err;
    }
    page.assign(size, 0);
    struct nvme_admin_cmd cmd;
    std::memset(&cmd, 0, sizeof cmd);
    cmd.opcode = kGetLogPage;
    cmd.nsid = kAllNamespaces;
    cmd.addr = reinterpret_cast<uintptr_t>(page.data());
    cmd.data_len = static_cast<uint32_t>(size);
    cmd.cdw10 = logId | static_cast<uint32_t>(size / 4 - 1) << 16;
    char what[64];
    std::snprintf(what, sizeof what, "ioctl NVME_IOCTL_ADMIN_CMD Get Log Page 0x%02x on ", logId);
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
