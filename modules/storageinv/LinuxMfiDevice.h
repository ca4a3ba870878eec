#ifndef SVM_LINUXMFIDEVICE_H
#define SVM_LINUXMFIDEVICE_H

#include "IMfiDevice.h"

namespace svm {

// The real management device. The driver waits for the controller without a
// time limit and in a sleep no signal ends, so each DCMD runs in a child
// process: when it has not answered in time the child is killed and left to
// finish on its own, holding none of our descriptors. Needs CAP_SYS_ADMIN;
// making a node needs CAP_MKNOD.
class LinuxMfiDevice : public IMfiDevice {
public:
    int Dcmd(const std::string& node, unsigned hostNo, uint32_t opcode, uint32_t size, unsigned timeoutMs,
             std::vector<uint8_t>& data, uint8_t& status, std::string& error) override;
    // The node goes into a new directory under /dev: devtmpfs always allows
    // device nodes, where /tmp and /run are often mounted nodev.
    int MakeNode(unsigned major, std::string& path, std::string& error) override;
    void RemoveNode(const std::string& path) override;
};

}  // namespace svm

#endif
