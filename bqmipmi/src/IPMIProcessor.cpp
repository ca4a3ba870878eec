#include "IPMIProcessor.h"

#include <linux/ipmi.h>
#include <sys/ioctl.h>
#include <sys/time.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "BQMIPMIData.h"
#include "BQMLogger.h"
#include "CBQMIPMICommandData.h"
#include "CPlatformLayer.h"
#include "IIPMIDeviceIO.h"

long gnMsgID = 1;

namespace {

const char* const kDeviceNodes[] = {"/dev/ipmi0", "/dev/ipmi/0", "/dev/ipmidev/0"};
const int kOpenPasses = 5;
const unsigned long kOpenPauseMs = 1000;

// The answer's wait is kept at these two numbers on purpose.
const long kWaitSeconds = 20;
const long kWaitMicroseconds = 60;

const unsigned char kCcSendFailed = 0x01;
const unsigned char kCcTruncated = 0x10;
const unsigned int kResponseDataRoom = BQMIPMI_MAX_BUFFER_LENGTH - 2;

// Completion codes after which a retry cannot help.
bool IsFinalCompletionCode(unsigned char cc) {
    if (cc <= 0x06) return true;
    switch (cc) {
        case 0x08:
        case 0x10:
        case 0xC1:
        case 0xC2:
        case 0xC7:
        case 0xC8:
        case 0xC9:
        case 0xCC:
        case 0xCE:
            return true;
        default:
            return false;
    }
}

void AppendHexBytes(std::string& out, const unsigned char* bytes, unsigned int count) {
    char piece[8];
    for (unsigned int i = 0; i < count; ++i) {
        std::snprintf(piece, sizeof(piece), " 0x%02x", bytes[i]);
        out += piece;
    }
}

}  // namespace

IPMIProcessor::IPMIProcessor(IIPMIDeviceIO& device, IPlatformImpl& platform)
    : mFd(-1), mDevice(device), mPlatform(platform) {}

IPMIProcessor::~IPMIProcessor() { Release(); }

int IPMIProcessor::Initialize() {
    if (mFd >= 0) return BQMIPMI_STATUS_SUCCESS;
    IIPMIDeviceIO& io = mDevice;
    for (int pass = 0; pass < kOpenPasses && mFd < 0; ++pass) {
        for (const char* path : kDeviceNodes) {
            BQM_LOG(BQM_LOG_INFO, "Open IPMI device : %s", path);
            mFd = io.Open(path);
            if (mFd >= 0) break;
            int error = errno;
            BQM_LOG(BQM_LOG_ERROR, "Errno: %d, %s, open failed for device: %s", error, std::strerror(error),
                    path);
        }
        if (mFd < 0) {
            BQM_LOG(BQM_LOG_ERROR, "Can't Open any IPMI Device, retries left : %d\n", kOpenPasses - pass);
            mPlatform.SleepMilliseconds(kOpenPauseMs);
        }
    }
    if (mFd < 0) {
        std::fputs("Can't open IPMI device\n", stderr);
        BQM_LOG(BQM_LOG_ERROR, "File Descriptor Value %d", mFd);
        return BQMIPMI_STATUS_FAILURE;
    }
    BQM_LOG(BQM_LOG_INFO, "File Descriptor Value %d", mFd);
    return BQMIPMI_STATUS_SUCCESS;
}

void IPMIProcessor::Release() {
    if (mFd < 0) return;
    mDevice.Close(mFd);
    mFd = -1;
}

int IPMIProcessor::Process(CBQMIPMICommandData& command) {
    LogIPMIResponse(command);

    const _BQMIPMIConfiguration* configuration = command.GetConfigurationData();
    if (configuration == nullptr) configuration = &kBQMIPMIDefaultConfiguration;
    const unsigned int retryCount = configuration->retryCount;
    const unsigned int retryInterval = configuration->retryInterval;

    const unsigned int requestLength = command.GetRequestBufferLength();
    unsigned char* request = command.GetRequestBufferData();
    if (requestLength < 2 || requestLength > BQMIPMI_MAX_BUFFER_LENGTH) {
        BQM_LOG(BQM_LOG_ERROR, "IPMIProcessor::Process() Invalid request length %u", requestLength);
        *command.GetResponseBufferData(2) = kCcSendFailed;
        return BQMIPMI_STATUS_FAILURE;
    }

    IIPMIDeviceIO& io = mDevice;

    struct ipmi_system_interface_addr address;
    std::memset(&address, 0, sizeof(address));
    address.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
    address.channel = IPMI_BMC_CHANNEL;
    address.lun = 0;

    struct ipmi_req sendRequest;
    std::memset(&sendRequest, 0, sizeof(sendRequest));
    sendRequest.addr = reinterpret_cast<unsigned char*>(&address);
    sendRequest.addr_len = sizeof(address);
    sendRequest.msg.netfn = request[0];
    sendRequest.msg.cmd = request[1];
    sendRequest.msg.data = request + 2;
    sendRequest.msg.data_len = static_cast<unsigned short>(requestLength - 2);
    const long msgId = gnMsgID++;
    sendRequest.msgid = msgId;

    if (io.Ioctl(mFd, IPMICTL_SEND_COMMAND, &sendRequest) < 0) {
        int error = errno;
        BQM_LOG(BQM_LOG_ERROR, "Error in ioctl IPMICTL_SEND_COMMAND and last error is %d: %s", error,
                std::strerror(error));
        *command.GetResponseBufferData(2) = kCcSendFailed;
        return BQMIPMI_STATUS_FAILURE;
    }

    for (unsigned int attempt = 1; attempt <= retryCount; ++attempt) {
        struct timeval timeout;
        timeout.tv_sec = kWaitSeconds;
        timeout.tv_usec = kWaitMicroseconds;
        bool ready = false;
        int waited = io.WaitReadable(mFd, &timeout, &ready);
        if (waited <= 0) {
            BQM_LOG(BQM_LOG_WARN,
                    "IPMI Driver Not available for Receiving IPMI Command response for  %d time\n", attempt);
            mPlatform.SleepMilliseconds(retryInterval);
            continue;
        }
        if (!ready) continue;

        struct ipmi_system_interface_addr fromAddress;
        std::memset(&fromAddress, 0, sizeof(fromAddress));
        struct ipmi_recv received;
        std::memset(&received, 0, sizeof(received));
        received.addr = reinterpret_cast<unsigned char*>(&fromAddress);
        received.addr_len = sizeof(fromAddress);
        received.msg.data = command.GetResponseBufferData(2);
        received.msg.data_len = kResponseDataRoom;

        if (io.Ioctl(mFd, IPMICTL_RECEIVE_MSG_TRUNC, &received) < 0) {
            int error = errno;
            if (error == EMSGSIZE) {
                *command.GetResponseBufferData(0) = received.msg.netfn;
                *command.GetResponseBufferData(1) = received.msg.cmd;
                *command.GetResponseBufferData(2) = kCcTruncated;
                BQM_LOG(
                    BQM_LOG_ERROR,
                    "Overurn of data and Error in ioctl IPMICTL_RECEIVE_MSG_TRUNC and last error is %d: \n",
                    error);
                return BQMIPMI_STATUS_FAILURE;
            }
            BQM_LOG(BQM_LOG_ERROR, "Error in ioctl IPMICTL_RECEIVE_MSG_TRUNC and last error is %d:", error);
            mPlatform.SleepMilliseconds(retryInterval);
            continue;
        }
        if (received.msgid != msgId) {
            BQM_LOG(BQM_LOG_WARN, "Mismatch in message id for id number %d", static_cast<int>(msgId));
            continue;
        }

        unsigned int dataLength = received.msg.data_len;
        if (dataLength > kResponseDataRoom) dataLength = kResponseDataRoom;
        *command.GetResponseBufferData(0) = received.msg.netfn;
        *command.GetResponseBufferData(1) = received.msg.cmd;
        command.SetResponseBufferLength(dataLength + 2);
        return BQMIPMI_STATUS_SUCCESS;
    }
    return BQMIPMI_STATUS_FAILURE;
}

int IPMIProcessor::ExecuteCommand(CBQMIPMICommandData& command) {
    const _BQMIPMIConfiguration* configuration = command.GetConfigurationData();
    if (configuration == nullptr) configuration = &kBQMIPMIDefaultConfiguration;
    const unsigned int retryCount = configuration->retryCount;
    const unsigned int retryInterval = configuration->retryInterval;

    unsigned int remaining = retryCount;
    unsigned char cc = 0;
    do {
        int status = Process(command);
        if (status != BQMIPMI_STATUS_SUCCESS) return status;
        cc = *command.GetResponseBufferData(2);
        if (IsFinalCompletionCode(cc)) {
            remaining = 0;
        } else {
            if (remaining > 0) --remaining;
            mPlatform.SleepMilliseconds(retryInterval);
        }
        BQM_LOG(BQM_LOG_INFO,
                "IPMIProcessor::ExecuteCommand Got IPMI return code as %x and number of retries left are %d "
                "out of %d",
                cc, remaining, retryCount);
        LogIPMIResponse(command);
    } while (remaining != 0 && cc != 0);
    return BQMIPMI_STATUS_SUCCESS;
}

void IPMIProcessor::LogIPMIResponse(CBQMIPMICommandData& command) {
    std::string line = "\nIPMI Request : ";
    unsigned int requestLength = command.GetRequestBufferLength();
    if (requestLength > BQMIPMI_MAX_BUFFER_LENGTH) requestLength = BQMIPMI_MAX_BUFFER_LENGTH;
    AppendHexBytes(line, command.GetRequestBufferData(), requestLength);
    line += "     ";
    line += " IPMI Response : ";
    line += " ";
    unsigned int responseLength = command.GetResponseBufferLength();
    if (responseLength > BQMIPMI_MAX_BUFFER_LENGTH) responseLength = BQMIPMI_MAX_BUFFER_LENGTH;
    AppendHexBytes(line, command.GetResponseBufferData(0), responseLength);
    BQM_LOG(BQM_LOG_DEBUG, "%s", line.c_str());
}
