#include "CBQMIPMICommandData.h"

#include <cstring>

#include "BQMLogger.h"

CBQMIPMICommandData::CBQMIPMICommandData(_BQMIPMICommandData* data) : mData(data) {
    BQM_LOG(BQM_LOG_DEBUG, "CBQMIPMICommandData::CBQMIPMICommandData() Entering");
    if (mData != nullptr) {
        std::memset(mData->responseBuffer, 0, sizeof(mData->responseBuffer));
        if (mData->configuration != nullptr) {
            mData->configuration->pollingByte = 0;
            mData->configuration->pollingStatus = 0;
        }
    }
    BQM_LOG(BQM_LOG_DEBUG, "CBQMIPMICommandData::CBQMIPMICommandData() Leaving");
}

CBQMIPMICommandData::~CBQMIPMICommandData() {}

unsigned int CBQMIPMICommandData::GetPollInterval() const {
    return mData->configuration != nullptr ? mData->configuration->pollInterval : 0;
}
void CBQMIPMICommandData::SetPollInterval(unsigned int value) {
    if (mData->configuration != nullptr) mData->configuration->pollInterval = value;
}
unsigned int CBQMIPMICommandData::GetPollCount() const {
    return mData->configuration != nullptr ? mData->configuration->pollCount : 0;
}
void CBQMIPMICommandData::SetPollCount(unsigned int value) {
    if (mData->configuration != nullptr) mData->configuration->pollCount = value;
}
unsigned int CBQMIPMICommandData::GetRetryCount() const {
    return mData->configuration != nullptr ? mData->configuration->retryCount : 0;
}
void CBQMIPMICommandData::SetRetryCount(unsigned int value) {
    if (mData->configuration != nullptr) mData->configuration->retryCount = value;
}
unsigned int CBQMIPMICommandData::GetRetryInterval() const {
    return mData->configuration != nullptr ? mData->configuration->retryInterval : 0;
}
void CBQMIPMICommandData::SetRetryInterval(unsigned int value) {
    if (mData->configuration != nullptr) mData->configuration->retryInterval = value;
}
unsigned int CBQMIPMICommandData::GetPollingByte() const {
    return mData->configuration != nullptr ? mData->configuration->pollingByte : 0;
}
unsigned char CBQMIPMICommandData::GetPollingStatus() const {
    return mData->configuration != nullptr ? mData->configuration->pollingStatus : 0;
}

void CBQMIPMICommandData::SetPollingByteStatus(unsigned int byte, unsigned char status) {
    if (mData->configuration == nullptr) return;
    mData->configuration->pollingByte = byte;
    mData->configuration->pollingStatus = status;
}

_BQMIPMIConfiguration* CBQMIPMICommandData::GetConfigurationData() const { return mData->configuration; }

void CBQMIPMICommandData::SetConfigurationData(_BQMIPMIConfiguration* configuration) {
    mData->configuration = configuration;
}

unsigned char* CBQMIPMICommandData::GetRequestBufferData() { return mData->requestBuffer; }
unsigned int CBQMIPMICommandData::GetRequestBufferLength() const { return mData->requestLength; }

unsigned char* CBQMIPMICommandData::GetResponseBufferData(unsigned int index) {
    return &mData->responseBuffer[index];
}

unsigned int CBQMIPMICommandData::GetResponseBufferLength() const { return mData->responseLength; }
void CBQMIPMICommandData::SetResponseBufferLength(unsigned int length) { mData->responseLength = length; }

void CBQMIPMICommandData::SetRequestBufferData(unsigned char* data, unsigned int length) {
    if (length > BQMIPMI_MAX_BUFFER_LENGTH) {
        BQM_LOG(
            BQM_LOG_ERROR,
            "CBQMIPMICommandData::SetRequestBufferData(), Requested Buffer length is greater than Maximum "
            "Request length");
        return;
    }
    mData->requestLength = length;
    if (data != nullptr) std::memcpy(mData->requestBuffer, data, length);
}

void CBQMIPMICommandData::SetResponseBufferData(unsigned char* data, unsigned int length) {
    if (length > BQMIPMI_MAX_BUFFER_LENGTH) {
        BQM_LOG(
            BQM_LOG_ERROR,
            "CBQMIPMICommandData::SetResponseBufferData(), Response length is greater than Maximum Buffer "
            "length");
        return;
    }
    mData->responseLength = length;
    if (data != nullptr) std::memcpy(mData->responseBuffer, data, length);
}

bool CBQMIPMICommandData::IsPollingRequired() const {
    if (GetPollingByte() == 0) {
        BQM_LOG(BQM_LOG_DEBUG, " CBQMIPMICommandData::IsPollingRequired(), Polling is required ");
        return true;
    }
    BQM_LOG(BQM_LOG_DEBUG, " CBQMIPMICommandData::IsPollingRequired(), Polling is not required ");
    return false;
}
