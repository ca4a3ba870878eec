#ifndef IPMICOMMANDPROCESSORCREATOR_H
#define IPMICOMMANDPROCESSORCREATOR_H

#include "CPlatformLayer.h"
#include "IIPMIDeviceIO.h"

class IIPMICommandProcessor;

class IPMICommandProcessorCreator {
public:
    // A processor whose device is open, owned by the caller; null when the
    // device cannot be opened or memory is short. device and platform are
    // borrowed by the processor.
    static IIPMICommandProcessor* Create(IIPMIDeviceIO& device = IIPMIDeviceIO::Real(),
                                         IPlatformImpl& platform = CPlatformLayer::Real());
};

#endif
