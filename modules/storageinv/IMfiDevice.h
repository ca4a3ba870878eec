#ifndef SVM_IMFIDEVICE_H
#define SVM_IMFIDEVICE_H

#include <cstdint>
#include <string>
#include <vector>

namespace svm {

// Seam over the megaraid_sas management device (MEGASAS_IOC_FIRMWARE on its
// character node) and the private node made for it, so tests can answer for
// fake controllers.
class IMfiDevice {
public:
    virtual ~IMfiDevice() = default;

    // Sends the MFI DCMD opcode to the controller whose SCSI host number is
    // hostNo through the management node at node, reading size bytes into
    // data; status receives the MFI status the controller completed the frame
    // with. Gives up after timeoutMs. Answers 0, or the errno value of the
    // failure (ETIMEDOUT when no answer came in time) with error naming the
    // call, the node and the reason.
    virtual int Dcmd(const std::string& node, unsigned hostNo, uint32_t opcode, uint32_t size,
                     unsigned timeoutMs, std::vector<uint8_t>& data, uint8_t& status, std::string& error) = 0;

    // Makes a character device node (major, minor 0) in a new private
    // directory; path receives the node's path. Answers 0 or the errno value
    // with error.
    virtual int MakeNode(unsigned major, std::string& path, std::string& error) = 0;

    // Removes a node MakeNode made, and its directory.
    virtual void RemoveNode(const std::string& path) = 0;
};

}  // namespace svm

#endif
