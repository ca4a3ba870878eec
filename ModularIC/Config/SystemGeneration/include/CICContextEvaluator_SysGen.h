#ifndef CICCONTEXTEVALUATOR_SYSGEN_H
#define CICCONTEXTEVALUATOR_SYSGEN_H

#include <map>
#include <set>
#include <string>

#include "BQMIPMIData.h"
#include "CPlatformLayer.h"
#include "IIPMIDeviceIO.h"

class BQMIPMIInterfaceImpl;

// Server generations, oldest first, plus the two values outside the table.
enum sysGeneration {
    GEN_UNDETERMINED = -1,
    GEN_PRE12G = 0,
    GEN_TWELVEG = 1,
    GEN_THIRTEENG = 2,
    GEN_FOURTEENG = 3,
    GEN_FIFTEENG = 4,
    GEN_SIXTEENG = 5,
    GEN_IPMI_FAILURE = 1001
};

// Learns the server's hardware generation from the management controller
// (one OEM request, network function 0x30, command 0xBD) and names the
// generations whose modules apply: the detected one and every older one, or
// all of them when the controller cannot be asked. Each detection opens and
// releases the IPMI library. One per process; not thread-safe.
class CICContextEvaluator_SysGen {
public:
    // The IPMI library it opens talks through platform and device (borrowed);
    // the singleton uses the real ones.
    explicit CICContextEvaluator_SysGen(IPlatformImpl& platform = CPlatformLayer::Real(),
                                        IIPMIDeviceIO& device = IIPMIDeviceIO::Real());
    ~CICContextEvaluator_SysGen();
    CICContextEvaluator_SysGen(const CICContextEvaluator_SysGen&) = delete;
    CICContextEvaluator_SysGen& operator=(const CICContextEvaluator_SysGen&) = delete;

    // The singleton, created on first use; null when memory is short.
    static CICContextEvaluator_SysGen* GetContextEvaluatorInstance();
    static void DeleteContextEvaluatorInstance();

    // Asks the controller. A generation value, 1001 when the IPMI library
    // could not be initialised or the request failed, or the last value
    // determined (initially -1) when something unexpected was thrown.
    int GetSystemGeneration();
    // The name of GetSystemGeneration's value; "GenFailure" for a value
    // outside the table.
    std::string GetSysGeneration();
    // Inserts the names of the detected generation and every older one (all
    // names for 1001, none for -1) and returns the generation value.
    int GetSysGenerationInventoryList(std::set<std::string>& names);

    // Creates and initialises the IPMI library object unless there is one,
    // through the singleton's platform and device; true when one is ready. The
    // next detection uses and releases it.
    static bool initIPMILayer();
    // Releases and deletes the library object if there is one. Returns 0.
    static int cleanIPMILayer();
    // Fills the value-to-name table (once).
    static void MapGenNameToGenValue();

    // The generation value for a request's outcome: 1001 when the request
    // failed, 0 for a non-zero completion code, else the rule on the
    // generation byte (response byte 8).
    static int GenerationFromResponse(int requestStatus, const _BQMIPMICommandData& response);
    // The rule on the generation byte alone.
    static int GenerationFromByte(unsigned char generationByte);

private:
    // A library object on this evaluator's platform and device, initialised;
    // null when it cannot be created. *status: Initialize's answer.
    BQMIPMIInterfaceImpl* OpenLibrary(int* status);

    IPlatformImpl& m_platform;
    IIPMIDeviceIO& m_device;

    static int m_eSysGeneration;
    static BQMIPMIInterfaceImpl* m_pBQMIPMILibHandle;
    static CICContextEvaluator_SysGen* m_ContextEvaluatorInstance;
    static std::map<int, std::string> mSysMap;
};

#endif
