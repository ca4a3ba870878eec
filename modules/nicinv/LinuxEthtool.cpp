#include "LinuxEthtool.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace svm {
namespace {

std::string Field(const char* data, size_t size) { return std::string(data, strnlen(data, size)); }

}  // namespace

LinuxEthtool::~LinuxEthtool() {
    if (m_socket >= 0) ::close(m_socket);
}

int LinuxEthtool::GetDrvInfo(const std::string& ifname, EthtoolDrvInfo& info, std::string& error) {
    if (ifname.empty() || ifname.size() >= IFNAMSIZ) {
        error = "invalid interface name \"" + ifname + "\"";
        return EINVAL;
    }
    if (m_socket < 0) {
        m_socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (m_socket < 0) m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (m_socket < 0) {
            int err = errno;
            error = std::string("socket: ") + std::strerror(err);
            return err;
        }
    }
    struct ethtool_drvinfo drv;
    std::memset(&drv, 0, sizeof drv);
    drv.cmd = ETHTOOL_GDRVINFO;
    struct ifreq request;
    std::memset(&request, 0, sizeof request);
    std::memcpy(request.ifr_name, ifname.c_str(), ifname.size());
    request.ifr_data = reinterpret_cast<char*>(&drv);
    int rc;
    do {
        rc = ::ioctl(m_socket, SIOCETHTOOL, &request);
    } while (rc < 0 && errno == EINTR);
    if (rc < 0) {
        int err = errno;
        error = "ioctl SIOCETHTOOL ETHTOOL_GDRVINFO on " + ifname + ": " + std::strerror(err);
        return err;
    }
    info.driver = Field(drv.driver, sizeof drv.driver);
    info.version = Field(drv.version, sizeof drv.version);
    info.fwVersion = Field(drv.fw_version, sizeof drv.fw_version);
    info.busInfo = Field(drv.bus_info, sizeof drv.bus_info);
    return 0;
}

}  // namespace svm
