#ifndef SVM_LINUXNVMEADMIN_H
#define SVM_LINUXNVMEADMIN_H

#include "INvmeAdmin.h"

namespace svm {

// The real NVME_IOCTL_ADMIN_CMD; the device is opened for each command and
// closed after it. Needs CAP_SYS_ADMIN.
class LinuxNvmeAdmin : public INvmeAdmin {
public:
    int Send(const std::string& device, const NvmeAdminCommand& command, unsigned timeoutMs,
             std::vector<uint8_t>& data, std::string& error) override;
};

}  // namespace svm

#endif
