#ifndef SVM_INVMEADMIN_H
#define SVM_INVMEADMIN_H

#include <cstdint>
#include <string>
#include <vector>

namespace svm {

// An admin command that reads data from the controller.
struct NvmeAdminCommand {
    uint8_t opcode = 0;
    uint32_t nsid = 0;
    uint32_t cdw10 = 0;
    uint32_t size = 0;  // bytes the controller returns
};

// Seam over the NVMe admin command ioctl, so tests can answer for fake
// controllers.
class INvmeAdmin {
public:
    virtual ~INvmeAdmin() = default;

    // Sends command on the controller's character device with timeoutMs as the
    // command's own time limit (0 would leave the kernel's admin timeout of
    // 60 s); data receives command.size bytes. Answers 0, or the errno value of
    // the failure (EIO when the controller completed the command with an error
    // status, ETIMEDOUT when it did not complete in time) with error naming the
    // call, the device and the reason.
    virtual int Send(const std::string& device, const NvmeAdminCommand& command, unsigned timeoutMs,
                     std::vector<uint8_t>& data, std::string& error) = 0;
};

}  // namespace svm

#endif
