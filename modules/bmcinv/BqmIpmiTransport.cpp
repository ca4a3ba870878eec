#include "BqmIpmiTransport.h"

#include <cstring>

#include "BQMIPMIData.h"
#include "BQMIPMIInterfaceImpl.h"
#include "BmcInventory.h"

namespace svm {

namespace {
// The library's three seconds before each driver unload would make this module
// the slowest of a run from a clean state. The device is closed before the
// drivers go, so the kernel needs no time to let go of it.
const unsigned long kDriverUnloadPauseMs = 50;
}  // namespace

BqmIpmiTransport::BqmIpmiTransport() : m_library(new BQMIPMIInterfaceImpl(kDriverUnloadPauseMs)) {}

BqmIpmiTransport::~BqmIpmiTransport() {
    // Also after a failed Initialize: whatever it loaded must go again.
    m_library->Release();
}

bool BqmIpmiTransport::Request(uint8_t netfn, uint8_t cmd, const std::vector<uint8_t>& data,
                               std::vector<uint8_t>& response, std::string& error) {
    if (data.size() + 2 > BQMIPMI_MAX_BUFFER_LENGTH) {
        error = "IPMI request too long";
        return false;
    }
    if (!m_initialized) {
        // Short pauses: the module must answer quickly even when the controller is slow.
        _BQMIPMIConfiguration config;
        std::memset(&config, 0, sizeof config);
        config.pollInterval = 60;
        config.pollCount = 5;
        config.retryCount = 5;
        config.retryInterval = 50;
        int status = m_library->Initialize(&config);
        if (status != 0) {
            m_library->Release();
            error = "IPMI library initialisation failed with status " + std::to_string(status);
            return false;
        }
        m_initialized = true;
    }
    _BQMIPMICommandData command;
    std::memset(&command, 0, sizeof command);
    command.requestLength = static_cast<unsigned>(data.size() + 2);
    command.responseLength = BQMIPMI_MAX_BUFFER_LENGTH;
    command.requestBuffer[0] = netfn;
    command.requestBuffer[1] = cmd;
    if (!data.empty()) std::memcpy(command.requestBuffer + 2, data.data(), data.size());
    int status = m_library->IPMIRequest(&command);
    if (status != 0) {
        error = IpmiRequestFailure(netfn, cmd, status);
        return false;
    }
    unsigned length = command.responseLength;
    if (length < 3 || length > BQMIPMI_MAX_BUFFER_LENGTH) {
        error = "IPMI answer of unexpected length " + std::to_string(length);
        return false;
    }
    response.assign(command.responseBuffer + 2, command.responseBuffer + length);
    return true;
}

}  // namespace svm
