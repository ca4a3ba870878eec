#ifndef SVM_IBMCTRANSPORT_H
#define SVM_IBMCTRANSPORT_H

#include <cstdint>
#include <string>
#include <vector>

namespace svm {

// Seam over the IPMI library: one request to the management controller.
class IBmcTransport {
public:
    virtual ~IBmcTransport() = default;

    // Sends netfn/cmd with data. On success response holds the completion
    // code followed by the response data; on failure error says why.
    virtual bool Request(uint8_t netfn, uint8_t cmd, const std::vector<uint8_t>& data,
                         std::vector<uint8_t>& response, std::string& error) = 0;
};

}  // namespace svm

#endif
