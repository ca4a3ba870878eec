#include "DriverManager.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "BQMLogger.h"
#include "CPlatformLayer.h"
#include "IPMIProcessor.h"

const char* const gIPMIMsgHandlerDriver = "ipmi_msghandler";
const char* const gIPMIDevIntfDriver = "ipmi_devintf";
const char* const gIPMISiDriver = "ipmi_si";
const char* const gLsmodCommand = "lsmod ";
const char* const gPipeSymbol = " | ";
const char* const gGrepCommand = "grep ";
const char* const gModprobeCommand = "modprobe ";
const char* const gRmmodCommand = "rmmod ";
const char* const gNullRedirection = " > /dev/null 2>&1 ";

namespace {

const int kOSNameESX = 18;
const int kOSNameESXi = 19;
const unsigned long kUnloadPauseMs = 3000;

// Points the process's standard error at /dev/null for its lifetime. The
// check's redirection covers only grep, so a missing lsmod would otherwise
// put the shell's complaint on the program's standard error.
class ScopedStderrSilencer {
  public:
    ScopedStderrSilencer() : mSaved(-1) {
        std::fflush(stderr);
        int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (null < 0) return;
        mSaved = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        if (mSaved >= 0 && dup2(null, STDERR_FILENO) < 0) {
            close(mSaved);
            mSaved = -1;
        }
        close(null);
    }
    ~ScopedStderrSilencer() {
        if (mSaved < 0) return;
        while (dup2(mSaved, STDERR_FILENO) < 0 && errno == EINTR) {
        }
        close(mSaved);
    }
    ScopedStderrSilencer(const ScopedStderrSilencer&) = delete;
    ScopedStderrSilencer& operator=(const ScopedStderrSilencer&) = delete;

  private:
    int mSaved;
};

}  // namespace

DriverManager::DriverManager(IBQMOSProbe* probe)
    : mEnvironment(probe),
      devIntfLoaded(false),
      msgHandlerLoaded(false),
      siLoaded(false),
      driverReady(false),
      loadAttempted(false) {}

DriverManager::~DriverManager() {
    BQM_LOG(BQM_LOG_DEBUG, "Entering DriverManager::~DriverManager()");
    BQM_LOG(BQM_LOG_DEBUG, "Leaving DriverManager::~DriverManager()");
}

int DriverManager::GetOSName() {
    mEnvironment.Initialize();
    return mEnvironment.GetOSName();
}

int DriverManager::IsDriverAvailable(BQMString name) {
    std::string command =
        std::string(gLsmodCommand) + gPipeSymbol + gGrepCommand + name.GetUTF8String() + gNullRedirection;
    int status;
    {
        ScopedStderrSilencer silence;
        status = CPlatformLayer::RunShellCommand(command);
    }
    BQM_LOG(BQM_LOG_INFO, "Command %s, Exit code : %d", command.c_str(), status);
    return status;
}

int DriverManager::LoadDriver(BQMString name) {
    std::string command = std::string(gModprobeCommand) + name.GetUTF8String() + gNullRedirection;
    int status = CPlatformLayer::RunShellCommand(command);
    BQM_LOG(BQM_LOG_INFO, "Command : %s, exit code : %d", command.c_str(), status);
    return status;
}

int DriverManager::ReleaseDriver(BQMString name) {
    // The pause lets the kernel finish with the device before its module goes.
    sleep_in_ms(kUnloadPauseMs);
    std::string command = std::string(gRmmodCommand) + name.GetUTF8String() + gNullRedirection;
    int status = CPlatformLayer::RunShellCommand(command);
    BQM_LOG(BQM_LOG_INFO, "Command : %s, exit code : %d", command.c_str(), status);
    return status;
}

int DriverManager::IsIPMIDriverAvailable() {
    BQM_LOG(BQM_LOG_DEBUG, "Entering DriverManager::IsIPMIDriverAvailable()");
    if (driverReady) {
        BQM_LOG(BQM_LOG_DEBUG, "Leaving DriverManager::IsIPMIDriverAvailable()");
        return 0;
    }
    const int osName = GetOSName();
    if (osName == kOSNameESX || osName == kOSNameESXi) {
        BQM_LOG(
            BQM_LOG_INFO,
            "Detected the system as ESX and hence blacklisting the checks for loading the driver on Linux "
            "Operating System");
        BQM_LOG(BQM_LOG_DEBUG, "Leaving DriverManager::IsIPMIDriverAvailable()");
        return 0;
    }

    struct {
        const char* name;
        bool* loaded;
    } const modules[] = {
        {gIPMIMsgHandlerDriver, &msgHandlerLoaded},
        {gIPMIDevIntfDriver, &devIntfLoaded},
        {gIPMISiDriver, &siLoaded},
    };
    for (const auto& module : modules) {
        if (IsDriverAvailable(BQMString(module.name, BQMString::BQM_ENCODING_UTF8)) == 0) {
            *module.loaded = true;
            BQM_LOG(BQM_LOG_INFO, "Driver %s is loaded", module.name);
        }
    }

    int result = 0;
    if (msgHandlerLoaded && devIntfLoaded && siLoaded) {
        driverReady = true;
    } else {
        result = LoadIPMIDriver();
        if (result == 0) driverReady = true;
    }
    BQM_LOG(BQM_LOG_DEBUG, "Leaving DriverManager::IsIPMIDriverAvailable()");
    return result;
}

int DriverManager::LoadIPMIDriver() {
    BQM_LOG(BQM_LOG_DEBUG, "DriverManager::LoadIPMIDriver() Entering");
    loadAttempted = true;
    const bool msgHandlerOk =
        msgHandlerLoaded || LoadDriver(BQMString(gIPMIMsgHandlerDriver, BQMString::BQM_ENCODING_UTF8)) == 0;
    const bool devIntfOk =
        devIntfLoaded || LoadDriver(BQMString(gIPMIDevIntfDriver, BQMString::BQM_ENCODING_UTF8)) == 0;
    const bool siOk = siLoaded || LoadDriver(BQMString(gIPMISiDriver, BQMString::BQM_ENCODING_UTF8)) == 0;
    // Lenient on purpose: one module that loaded (or was there) is enough to go on.
    const int result = (!msgHandlerOk && !devIntfOk && !siOk) ? 1 : 0;
    BQM_LOG(BQM_LOG_DEBUG, "DriverManager::LoadIPMIDriver() Leaving");
    return result;
}

int DriverManager::ReleaseIPMIDriver() {
    BQM_LOG(BQM_LOG_DEBUG, "DriverManager::ReleaseIPMIDriver() Entering");
    // Only ESXi is excluded here; ESX never gets past IsIPMIDriverAvailable's
    // check, so nothing was loaded there.
    if (loadAttempted && GetOSName() != kOSNameESXi) {
        struct {
            const char* name;
            bool loaded;
        } const modules[] = {
            {gIPMISiDriver, siLoaded},
            {gIPMIDevIntfDriver, devIntfLoaded},
            {gIPMIMsgHandlerDriver, msgHandlerLoaded},
        };
        for (const auto& module : modules) {
            if (module.loaded) continue;
            ReleaseDriver(BQMString(module.name, BQMString::BQM_ENCODING_UTF8));
            BQM_LOG(BQM_LOG_INFO, "Unloaded IPMI driver %s since it is already loaded", module.name);
        }
        // What was loaded is gone again: a second release must not unload anything.
        loadAttempted = false;
        driverReady = false;
    }
    BQM_LOG(BQM_LOG_DEBUG, "DriverManager::ReleaseIPMIDriver() Leaving");
    return 0;
}
