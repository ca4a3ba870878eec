#include "LinuxMfiDevice.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "ChildCall.h"
#include "MfiControllerInfo.h"

namespace svm {
namespace {

const unsigned long kMegasasIocFirmware = _IOWR('M', 1, MfiIocPacket);

// The child's answer: the errno value of the failed call (4 bytes), which call
// failed (1: open, 2: ioctl), the MFI status, then the data.
const size_t kHeader = 6;

std::vector<uint8_t> RunDcmd(const std::string& node, unsigned hostNo, uint32_t opcode, uint32_t size) {
    std::vector<uint8_t> answer(kHeader + size, 0);
    int err = 0;
    int fd;
    do {
        fd = ::open(node.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        err = errno;
        answer[4] = 1;
    } else {
        MfiIocPacket packet;
        BuildMfiDcmd(packet, static_cast<uint16_t>(hostNo), opcode, answer.data() + kHeader, size);
        int rc;
        do {
            rc = ::ioctl(fd, kMegasasIocFirmware, &packet);
        } while (rc < 0 && errno == EINTR);
        if (rc < 0) err = errno, answer[4] = 2;
        answer[5] = packet.frame[2];
        ::close(fd);
    }
    std::memcpy(answer.data(), &err, 4);
    if (err != 0) answer.resize(kHeader);
    return answer;
}

}  // namespace

int LinuxMfiDevice::Dcmd(const std::string& node, unsigned hostNo, uint32_t opcode, uint32_t size,
                         unsigned timeoutMs, std::vector<uint8_t>& data, uint8_t& status,
                         std::string& error) {
    const std::string what =
        "ioctl MEGASAS_IOC_FIRMWARE on " + node + " for host" + std::to_string(hostNo) + ": ";
    std::vector<uint8_t> answer;
    std::string why;
    const int rc = CallInChild([&] { return RunDcmd(node, hostNo, opcode, size); }, timeoutMs, answer, why);
    if (rc != 0) {
        error = what + why;
        return rc;
    }
    if (answer.size() < kHeader) {
        error = what + "answer of " + std::to_string(answer.size()) + " bytes";
        return EIO;
    }
    int err;
    std::memcpy(&err, answer.data(), 4);
    if (err != 0) {
        error = (answer[4] == 1 ? "open " + node + ": " : what) + std::strerror(err);
        return err;
    }
    status = answer[5];
    data.assign(answer.begin() + kHeader, answer.end());
    return 0;
}

int LinuxMfiDevice::MakeNode(unsigned major, std::string& path, std::string& error) {
    char dir[] = "/dev/sorvik-mfi.XXXXXX";
    if (::mkdtemp(dir) == nullptr) {
        const int err = errno;
        error = std::string("mkdtemp ") + dir + ": " + std::strerror(err);
        return err;
    }
    path = std::string(dir) + "/megaraid_sas_ioctl_node";
    if (::mknod(path.c_str(), S_IFCHR | 0600, makedev(major, 0)) != 0) {
        const int err = errno;
        error = "mknod " + path + ": " + std::strerror(err);
        ::rmdir(dir);
        return err;
    }
    return 0;
}

void LinuxMfiDevice::RemoveNode(const std::string& path) {
    ::unlink(path.c_str());
    ::rmdir(path.substr(0, path.rfind('/')).c_str());
}

}  // namespace svm
