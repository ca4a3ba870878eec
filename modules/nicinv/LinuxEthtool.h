#ifndef SVM_LINUXETHTOOL_H
#define SVM_LINUXETHTOOL_H

#include "IEthtool.h"

namespace svm {

// The real ETHTOOL_GDRVINFO request through a datagram socket, opened on first
// use and closed with the object.
class LinuxEthtool : public IEthtool {
public:
    LinuxEthtool() = default;
    ~LinuxEthtool() override;
    LinuxEthtool(const LinuxEthtool&) = delete;
    LinuxEthtool& operator=(const LinuxEthtool&) = delete;

    int GetDrvInfo(const std::string& ifname, EthtoolDrvInfo& info, std::string& error) override;

private:
    int m_socket = -1;
};

}  // namespace svm

#endif
