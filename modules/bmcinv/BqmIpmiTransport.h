#ifndef SVM_BQMIPMITRANSPORT_H
#define SVM_BQMIPMITRANSPORT_H

#include <memory>

#include "IBmcTransport.h"

class BQMIPMIInterfaceImpl;

namespace svm {

// Requests through the project's IPMI library: initialised on the first
// request, released with the object.
class BqmIpmiTransport : public IBmcTransport {
public:
    BqmIpmiTransport();
    ~BqmIpmiTransport() override;
    BqmIpmiTransport(const BqmIpmiTransport&) = delete;
    BqmIpmiTransport& operator=(const BqmIpmiTransport&) = delete;

    bool Request(uint8_t netfn, uint8_t cmd, const std::vector<uint8_t>& data, std::vector<uint8_t>& response,
                 std::string& error) override;

private:
    std::unique_ptr<BQMIPMIInterfaceImpl> m_library;
    bool m_initialized = false;
};

}  // namespace svm

#endif
