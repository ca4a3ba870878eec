#ifndef SVM_LINUXNVMEADMIN_H
#define SVM_LINUXNVMEADMIN_H

#include "INvmeAdmin.h"

namespace svm {

// The real NVME_IOCTL_ADMIN_CMD; the device is opened for each request and
// closed after it. Needs CAP_SYS_ADMIN.
class LinuxNvmeAdmin : public INvmeAdmin {
public:
    int GetLogPage(const std::string& device, uint8_t logId, size_t size, std::vector<uint8_t>& page,
                   std::string& error) override;
};

}  // namespace svm

#endif
