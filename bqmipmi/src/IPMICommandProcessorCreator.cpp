#include "IPMICommandProcessorCreator.h"

#include <new>

#include "BQMLogger.h"
#include "IPMIProcessor.h"

IIPMICommandProcessor* IPMICommandProcessorCreator::Create(IIPMIDeviceIO& device, IPlatformImpl& platform) {
    BQM_LOG(BQM_LOG_DEBUG, "IPMICommandProcessorCreator::Create() Entering");
    IPMIProcessor* processor = new (std::nothrow) IPMIProcessor(device, platform);
    if (processor != nullptr && processor->Initialize() != 0) {
        delete processor;
        processor = nullptr;
    }
    BQM_LOG(BQM_LOG_DEBUG, "IPMICommandProcessorCreator::Create() Leaving");
    return processor;
}
