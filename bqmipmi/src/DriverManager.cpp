#include "DriverManager.h"

#include <algorithm>
#include <sstream>
#include <string>

#include "BQMLogger.h"
#include "CPlatformLayer.h"

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

// One line of lsmod: "name size count holder,holder,...".
struct LoadedModule {
    std::string name;
    std::vector<std::string> holders;
};

std::vector<LoadedModule> ParseModuleList(const std::string& text) {
    std::vector<LoadedModule> modules;
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);  // the heading
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        LoadedModule module;
        std::string size, count, users;
        if (!(fields >> module.name >> size >> count)) continue;
        fields >> users;
        std::istringstream names(users);
        std::string holder;
        while (std::getline(names, holder, ',')) {
            // "-" and "[permanent]" say something about the module, not who holds it.
            if (!holder.empty() && holder != "-" && holder[0] != '[') module.holders.push_back(holder);
        }
        modules.push_back(module);
    }
    return modules;
}

}  // namespace

DriverManager::DriverManager(IBQMOSProbe* probe, unsigned long unloadPauseMs, IPlatformImpl& platform)
    : mEnvironment(probe),
      devIntfLoaded(false),
      msgHandlerLoaded(false),
      siLoaded(false),
      driverReady(false),
      loadAttempted(false),
      mUnloadPauseMs(unloadPauseMs),
      mPlatform(platform) {}

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
    // The redirection covers only grep: a missing lsmod would otherwise put the
    // shell's complaint on our standard error.
    const int status = mPlatform.RunShellCommand(command, true);
    BQM_LOG(BQM_LOG_INFO, "Command %s, Exit code : %d", command.c_str(), status);
    return status;
}

int DriverManager::LoadDriver(BQMString name) {
    std::string command = std::string(gModprobeCommand) + name.GetUTF8String() + gNullRedirection;
    int status = mPlatform.RunShellCommand(command, false);
    BQM_LOG(BQM_LOG_INFO, "Command : %s, exit code : %d", command.c_str(), status);
    return status;
}

int DriverManager::ReleaseDriver(BQMString name) {
    // The pause lets the kernel finish with the device before its module goes.
    mPlatform.SleepMilliseconds(mUnloadPauseMs);
    std::string command = std::string(gRmmodCommand) + name.GetUTF8String() + gNullRedirection;
    int status = mPlatform.RunShellCommand(command, false);
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
        for (const std::string& holder : HoldersToUnload()) {
            const std::string command = std::string(gRmmodCommand) + holder + gNullRedirection;
            const int status = mPlatform.RunShellCommand(command, false);
            BQM_LOG(BQM_LOG_INFO, "Command : %s, exit code : %d", command.c_str(), status);
        }
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

std::vector<std::string> DriverManager::HoldersToUnload() {
    std::string listing;
    if (mPlatform.ReadShellOutput("lsmod", listing) != 0) return {};
    const std::vector<LoadedModule> loaded = ParseModuleList(listing);

    std::vector<std::string> leaving;  // the drivers to be unloaded, then the holders found
    if (!siLoaded) leaving.push_back(gIPMISiDriver);
    if (!devIntfLoaded) leaving.push_back(gIPMIDevIntfDriver);
    if (!msgHandlerLoaded) leaving.push_back(gIPMIMsgHandlerDriver);
    const std::size_t drivers = leaving.size();
    const char* const ownDrivers[] = {gIPMISiDriver, gIPMIDevIntfDriver, gIPMIMsgHandlerDriver};
    // A few modules at most: the list is walked again for each one found.
    for (std::size_t next = 0; next < leaving.size(); ++next) {
        for (const LoadedModule& module : loaded) {
            if (module.name != leaving[next]) continue;
            for (const std::string& holder : module.holders) {
                const bool ownDriver =
                    std::find(std::begin(ownDrivers), std::end(ownDrivers), holder) != std::end(ownDrivers);
                if (!ownDriver && std::find(leaving.begin(), leaving.end(), holder) == leaving.end())
                    leaving.push_back(holder);
            }
        }
    }
    // Found later means holding something found earlier: unload in reverse.
    return std::vector<std::string>(leaving.rbegin(), leaving.rend() - static_cast<std::ptrdiff_t>(drivers));
}
