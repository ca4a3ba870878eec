#include "CICContextEvaluator_SysGen.h"

#include <cstring>
#include <new>

#include "BQMIPMIInterfaceImpl.h"

int CICContextEvaluator_SysGen::m_eSysGeneration = GEN_UNDETERMINED;
BQMIPMIInterfaceImpl* CICContextEvaluator_SysGen::m_pBQMIPMILibHandle = nullptr;
CICContextEvaluator_SysGen* CICContextEvaluator_SysGen::m_ContextEvaluatorInstance = nullptr;
std::map<int, std::string> CICContextEvaluator_SysGen::mSysMap;

namespace {

const unsigned char kNetFnOem = 0x30;
const unsigned char kCmdGetGeneration = 0xBD;
const unsigned int kExpectedResponseLength = 9;
const unsigned int kGenerationByteIndex = 8;
const unsigned int kCompletionCodeIndex = 2;

_BQMIPMIConfiguration GenerationRequestConfiguration() {
    _BQMIPMIConfiguration configuration;
    configuration.pollInterval = 60;
    configuration.pollCount = 5;
    configuration.retryCount = 5;
    configuration.retryInterval = 50;
    configuration.pollingByte = 0;
    configuration.pollingStatus = 0;
    return configuration;
}

}  // namespace

CICContextEvaluator_SysGen::CICContextEvaluator_SysGen(IPlatformImpl& platform, IIPMIDeviceIO& device)
    : m_platform(platform), m_device(device) {}

CICContextEvaluator_SysGen::~CICContextEvaluator_SysGen() {}

CICContextEvaluator_SysGen* CICContextEvaluator_SysGen::GetContextEvaluatorInstance() {
    MapGenNameToGenValue();
    if (m_ContextEvaluatorInstance == nullptr)
        m_ContextEvaluatorInstance = new (std::nothrow) CICContextEvaluator_SysGen();
    return m_ContextEvaluatorInstance;
}

void CICContextEvaluator_SysGen::DeleteContextEvaluatorInstance() {
    delete m_ContextEvaluatorInstance;
    m_ContextEvaluatorInstance = nullptr;
}

void CICContextEvaluator_SysGen::MapGenNameToGenValue() {
    if (!mSysMap.empty()) return;
    mSysMap[GEN_PRE12G] = "GenPre12G";
    mSysMap[GEN_TWELVEG] = "GenTwelveG";
    mSysMap[GEN_THIRTEENG] = "GenThirteenG";
    mSysMap[GEN_FOURTEENG] = "GenFourteenG";
    mSysMap[GEN_FIFTEENG] = "GenFifteenG";
    mSysMap[GEN_SIXTEENG] = "GenSixteenG";
}

int CICContextEvaluator_SysGen::GenerationFromByte(unsigned char g) {
    // The order of the tests matters: every unknown code above 0x15 falls
    // through to the thirteenth generation.
    if (g <= 0x0E) return GEN_PRE12G;
    if (g >= 0x50 && g <= 0x52) return GEN_SIXTEENG;
    if (g >= 0x40 && g <= 0x42) return GEN_FIFTEENG;
    if (g >= 0x30 && g <= 0x32) return GEN_FOURTEENG;
    if (g > 0x15) return GEN_THIRTEENG;
    return GEN_TWELVEG;
}

int CICContextEvaluator_SysGen::GenerationFromResponse(int requestStatus,
                                                       const _BQMIPMICommandData& response) {
    if (requestStatus != 0) return GEN_IPMI_FAILURE;
    if (response.responseBuffer[kCompletionCodeIndex] != 0) return GEN_PRE12G;
    return GenerationFromByte(response.responseBuffer[kGenerationByteIndex]);
}

BQMIPMIInterfaceImpl* CICContextEvaluator_SysGen::OpenLibrary(int* status) {
    BQMIPMIInterfaceImpl* library =
        new (std::nothrow) BQMIPMIInterfaceImpl(kIPMIDriverUnloadPauseMs, m_platform, m_device);
    if (library == nullptr) return nullptr;
    const _BQMIPMIConfiguration configuration = GenerationRequestConfiguration();
    *status = library->Initialize(&configuration);
    return library;
}

bool CICContextEvaluator_SysGen::initIPMILayer() {
    if (m_pBQMIPMILibHandle != nullptr) return true;
    CICContextEvaluator_SysGen* evaluator = GetContextEvaluatorInstance();
    if (evaluator == nullptr) return false;
    int status = 0;
    BQMIPMIInterfaceImpl* library = evaluator->OpenLibrary(&status);
    if (library == nullptr) return false;
    if (status != 0) {
        library->Release();
        delete library;
        return false;
    }
    m_pBQMIPMILibHandle = library;
    return true;
}

int CICContextEvaluator_SysGen::cleanIPMILayer() {
    if (m_pBQMIPMILibHandle != nullptr) {
        m_pBQMIPMILibHandle->Release();
        delete m_pBQMIPMILibHandle;
        m_pBQMIPMILibHandle = nullptr;
    }
    return 0;
}

int CICContextEvaluator_SysGen::GetSystemGeneration() {
    try {
        _BQMIPMICommandData request;
        std::memset(&request, 0, sizeof(request));
        request.configuration = nullptr;
        request.requestLength = 2;
        request.requestBuffer[0] = kNetFnOem;
        request.requestBuffer[1] = kCmdGetGeneration;
        request.responseLength = kExpectedResponseLength;

        if (m_pBQMIPMILibHandle == nullptr) {
            int initialized = 0;
            m_pBQMIPMILibHandle = OpenLibrary(&initialized);
            if (m_pBQMIPMILibHandle == nullptr) return GEN_IPMI_FAILURE;
            // The object stays allocated; the next detection finds it.
            if (initialized != 0) return GEN_IPMI_FAILURE;
        }

        const int status = m_pBQMIPMILibHandle->IPMIRequest(&request);
        m_eSysGeneration = GenerationFromResponse(status, request);

        m_pBQMIPMILibHandle->Release();
        delete m_pBQMIPMILibHandle;
        m_pBQMIPMILibHandle = nullptr;
        return m_eSysGeneration;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        return m_eSysGeneration;
    }
}

std::string CICContextEvaluator_SysGen::GetSysGeneration() {
    std::string name = "GenFailure";
    const int generation = GetSystemGeneration();
    if (generation != GEN_UNDETERMINED) {
        MapGenNameToGenValue();
        std::map<int, std::string>::const_iterator found = mSysMap.find(generation);
        if (found != mSysMap.end()) name = found->second;
    }
    return name;
}

int CICContextEvaluator_SysGen::GetSysGenerationInventoryList(std::set<std::string>& names) {
    const int generation = GetSystemGeneration();
    if (generation == GEN_UNDETERMINED) return generation;
    MapGenNameToGenValue();
    for (std::map<int, std::string>::const_iterator entry = mSysMap.begin(); entry != mSysMap.end();
         ++entry) {
        if (entry->first > generation) break;
        names.insert(entry->second);
    }
    return generation;
}
