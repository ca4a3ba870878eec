#ifndef SVM_ITPMDEVICE_H
#define SVM_ITPMDEVICE_H

#include <cstdint>
#include <string>
#include <vector>

namespace svm {

// Seam over a TPM character device, so tests can answer with recorded
// responses.
class ITpmDevice {
public:
    virtual ~ITpmDevice() = default;

    // Writes one command to the device at path and reads its response.
    // Answers 0; ENOENT when the device is not there; another errno value with
    // error naming the call, the path and the reason.
    virtual int Transact(const std::string& path, const std::vector<uint8_t>& command,
                         std::vector<uint8_t>& response, std::string& error) = 0;
};

}  // namespace svm

#endif
