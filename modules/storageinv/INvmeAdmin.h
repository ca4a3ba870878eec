#ifndef SVM_INVMEADMIN_H
#define SVM_INVMEADMIN_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace svm {

// Seam over the NVMe admin command ioctl, so tests can answer for fake
// controllers.
class INvmeAdmin {
public:
    virtual ~INvmeAdmin() = default;

    // Get Log Page (admin opcode 0x02, all namespaces) on the controller's
    // character device: page receives size bytes of log logId. Answers 0, or
    // the errno value of the failure (EIO when the controller completed the
    // command with an error status) with error naming the call, the device and
    // the reason.
    virtual int GetLogPage(const std::string& device, uint8_t logId, size_t size, std::vector<uint8_t>& page,
                           std::string& error) = 0;
};

}  // namespace svm

#endif
