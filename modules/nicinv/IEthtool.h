#ifndef SVM_IETHTOOL_H
#define SVM_IETHTOOL_H

#include <string>

namespace svm {

// The answer of the ETHTOOL_GDRVINFO request for one interface.
struct EthtoolDrvInfo {
    std::string driver;
    std::string version;
    std::string fwVersion;
    std::string busInfo;
};

// Seam over the SIOCETHTOOL ioctl, so tests can answer for fake interfaces.
class IEthtool {
public:
    virtual ~IEthtool() = default;

    // Asks the driver of interface ifname. Answers 0, or the errno value of
    // the failure with error naming the call and the reason.
    virtual int GetDrvInfo(const std::string& ifname, EthtoolDrvInfo& info, std::string& error) = 0;
};

}  // namespace svm

#endif
