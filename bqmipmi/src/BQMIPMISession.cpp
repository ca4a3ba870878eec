#include "BQMIPMISession.h"

#include <cstring>

#include "BQMIPMISessionHandler.h"
#include "BQMIPMIXMLConfig.h"
#include "BQMLogger.h"
#include "CBQMIPMICommandData.h"
#include "IIPMICommandProcessor.h"
#include "IPMICommandProcessorCreator.h"

BQMIPMIXMLConfig& BQMIPMISession::XMLConfig() {
    static BQMIPMIXMLConfig config;
    return config;
}

void BQMIPMISession::SetConfigurationFileName(BQMString name) { XMLConfig().SetConfigurationFileName(name); }

BQMIPMISession::BQMIPMISession()
    : mProcessor(nullptr),
      mDevice(&IIPMIDeviceIO::Real()),
      mPlatform(&CPlatformLayer::Real()),
      mInitialized(false),
      mConfiguredFromFile(false) {
    std::memset(&mConfiguration, 0, sizeof(mConfiguration));
}

BQMIPMISession::~BQMIPMISession() { Release(); }

bool BQMIPMISession::Initialize(const _BQMIPMIConfiguration* fallback, IIPMIDeviceIO& device,
                                IPlatformImpl& platform) {
    if (mInitialized) return true;
    mDevice = &device;
    mPlatform = &platform;
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMISession::Initialize() Entering");
    if (mProcessor == nullptr) mProcessor = IPMICommandProcessorCreator::Create(*mDevice, *mPlatform);

    const _BQMIPMIConfiguration defaults =
        BQMIPMISessionHandler::GetInstance()->GetApplicationDefaultConfiguration();
    mConfiguration.pollInterval = defaults.pollInterval;
    mConfiguration.pollCount = defaults.pollCount;
    mConfiguration.retryCount = defaults.retryCount;
    mConfiguration.retryInterval = defaults.retryInterval;

    if (XMLConfig().Initialize() && InitializeFromFile()) {
        mConfiguredFromFile = true;
    } else {
        BQM_LOG(BQM_LOG_INFO, "Config couldn't be initialized from configuration file");
        mConfiguredFromFile = false;
        if (fallback != nullptr) mConfiguration = *fallback;
    }

    mInitialized = mProcessor != nullptr;
    BQM_LOG(BQM_LOG_DEBUG, "BQMIPMISession::Initialize() Leaving");
    return mInitialized;
}

bool BQMIPMISession::InitializeFromFile() {
    BQMIPMIXMLConfig& config = XMLConfig();
    if (config.GetDefaultConfigNode() == nullptr) return false;
    struct {
        const char* key;
        unsigned int* field;
    } const settings[] = {
        {"RetryCount", &mConfiguration.retryCount},
        {"PollingInterval", &mConfiguration.pollInterval},
        {"PollingCount", &mConfiguration.pollCount},
        {"RetryInterval", &mConfiguration.retryInterval},
    };
    for (const auto& setting : settings) {
        int value = 0;
        if (!config.GetConfigInt(BQMString(setting.key, BQMString::BQM_ENCODING_UTF8), &value)) continue;
        // A negative count or interval would become an enormous unsigned one.
        if (value < 0) {
            BQM_LOG(BQM_LOG_WARN, "Ignoring negative value %d of %s", value, setting.key);
            continue;
        }
        *setting.field = static_cast<unsigned int>(value);
    }
    mConfiguredFromFile = true;
    return true;
}

int BQMIPMISession::ProcessCommand(CBQMIPMICommandData& command) {
    if (!mInitialized && !Initialize(nullptr, *mDevice, *mPlatform)) return BQMIPMI_STATUS_FAILURE;
    _BQMIPMIConfiguration* callerConfiguration = command.GetConfigurationData();
    if (mConfiguredFromFile || callerConfiguration == nullptr) command.SetConfigurationData(&mConfiguration);
    int status = mProcessor->ExecuteCommand(command);
    // The session's record must not stay reachable from the caller's request.
    command.SetConfigurationData(callerConfiguration);
    return status;
}

void BQMIPMISession::Release() {
    delete mProcessor;
    mProcessor = nullptr;
    mInitialized = false;
}
