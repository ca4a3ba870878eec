#ifndef IPMICOMMANDPROCESSORCREATOR_H
#define IPMICOMMANDPROCESSORCREATOR_H

class IIPMICommandProcessor;

class IPMICommandProcessorCreator {
public:
    // A processor whose device is open, owned by the caller; null when the
    // device cannot be opened or memory is short.
    static IIPMICommandProcessor* Create();
};

#endif
