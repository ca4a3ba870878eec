#ifndef SVM_NOIPMITRANSPORT_H
#define SVM_NOIPMITRANSPORT_H

#include "IBmcTransport.h"

namespace svm {

// Transport of a build without the IPMI library: every request fails.
class NoIpmiTransport : public IBmcTransport {
public:
    bool Request(uint8_t, uint8_t, const std::vector<uint8_t>&, std::vector<uint8_t>&,
                 std::string& error) override {
        error = "this build of bmcinv has no IPMI library";
        return false;
    }
};

}  // namespace svm

#endif
