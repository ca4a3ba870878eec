#include "BQMIPMIInterfaceImpl.h"

#include <new>

#include "BQMIPMISession.h"
#include "BQMIPMISessionHandler.h"
#include "BQMLogger.h"
#include "CBQMIPMICommandData.h"
#include "DriverManager.h"
#include "InitializeBQMLogger.h"

BQMIPMIInterfaceImpl::BQMIPMIInterfaceImpl(unsigned long driverUnloadPauseMs, IPlatformImpl& platform,
                                           IIPMIDeviceIO& device)
    : mDriverUnloadPauseMs(driverUnloadPauseMs),
      mPlatform(platform),
      mDevice(device),
      mDriverManager(nullptr),
      mReady(false) {}

BQMIPMIInterfaceImpl::~BQMIPMIInterfaceImpl() { ReleaseDrivers(); }

void BQMIPMIInterfaceImpl::ReleaseDrivers() {
    if (mDriverManager == nullptr) return;
    mDriverManager->ReleaseIPMIDriver();
    delete mDriverManager;
    mDriverManager = nullptr;
}

int BQMIPMIInterfaceImpl::Initialize(const _BQMIPMIConfiguration* config) {
    InitializeBQMLogger();
    BQM_LOG(BQM_LOG_INFO, "Started Logging for BQMIPMI Library");

    if (mDriverManager == nullptr)
        mDriverManager = new (std::nothrow) DriverManager(nullptr, mDriverUnloadPauseMs, mPlatform);
    if (mDriverManager == nullptr) return BQMIPMI_STATUS_INVALID;
    int driverStatus = mDriverManager->IsIPMIDriverAvailable();
    if (driverStatus != 0) {
        // Every load failed, so nothing is loaded that Release would have to
        // remove; keeping the manager would only cost the unload pauses.
        delete mDriverManager;
        mDriverManager = nullptr;
        return driverStatus;
    }

    BQMIPMISessionHandler* handler = BQMIPMISessionHandler::GetInstance();
    if (handler != nullptr && config != nullptr) handler->SetApplicationDefaultConfiguration(*config);
    BQMIPMISession* session = handler != nullptr ? handler->GetSession() : nullptr;
    if (session == nullptr || !session->Initialize(nullptr, mDevice, mPlatform)) {
        // Callers give up on a failed Initialize: nothing loaded may stay behind.
        ReleaseDrivers();
        return BQMIPMI_STATUS_INVALID;
    }
    mReady = true;
    return 0;
}

int BQMIPMIInterfaceImpl::Initialize(BQMString configFile) {
    BQMIPMISession::SetConfigurationFileName(configFile);
    return Initialize(static_cast<const _BQMIPMIConfiguration*>(nullptr));
}

int BQMIPMIInterfaceImpl::IPMIRequest(_BQMIPMICommandData* request) {
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMIInterfaceImpl::IPMIRequest() Entering");
    if (request == nullptr) {
        BQM_LOG(BQM_LOG_ERROR, "Invalid parameter passed");
        return BQMIPMI_STATUS_INVALID;
    }
    // Without a successful Initialize the drivers were never checked; touching
    // the device now would only repeat the failed open and its pauses.
    if (!mReady) {
        BQM_LOG(BQM_LOG_ERROR, "BQMIPMIInterfaceImpl::IPMIRequest() Library not initialized");
        return BQMIPMI_STATUS_INVALID;
    }
    BQMIPMISessionHandler* handler = BQMIPMISessionHandler::GetInstance();
    BQMIPMISession* session = handler != nullptr ? handler->GetSession() : nullptr;
    if (session == nullptr) return BQMIPMI_STATUS_INVALID;
    CBQMIPMICommandData command(request);
    int status = session->ProcessCommand(command);
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMIInterfaceImpl::IPMIRequest() Leaving");
    return status;
}

int BQMIPMIInterfaceImpl::Release() {
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMIInterfaceImpl::Release() Entering");
    BQMIPMISessionHandler* handler = BQMIPMISessionHandler::GetInstance();
    int status = handler != nullptr ? handler->ReleaseSession() : BQMIPMI_STATUS_INVALID;
    ReleaseDrivers();
    mReady = false;
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMIInterfaceImpl::Release() Leaving");
    return status & 0xFF;
}
