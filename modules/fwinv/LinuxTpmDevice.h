#ifndef SVM_LINUXTPMDEVICE_H
#define SVM_LINUXTPMDEVICE_H

#include "ITpmDevice.h"

namespace svm {

// The real device: opened for each command and closed after its response.
// The kernel's TPM driver bounds how long a command may take.
class LinuxTpmDevice : public ITpmDevice {
public:
    int Transact(const std::string& path, const std::vector<uint8_t>& command, std::vector<uint8_t>& response,
                 std::string& error) override;
};

}  // namespace svm

#endif
