#include "PciInventory.h"

#include <sys/utsname.h>

#include <vector>

#include "svm/PciIdDatabase.h"
#include "svm/TextUtil.h"

namespace svm {

std::string KernelRelease(const Sysfs& fs) {
    std::string release = fs.ReadLineOr("/proc/sys/kernel/osrelease");
    if (!release.empty() || fs.Root() != "/") return release;
    struct utsname names;
    return ::uname(&names) == 0 ? std::string(names.release) : std::string();
}

DriverVersion ReadDriverVersion(const Sysfs& fs, const std::string& address,
                                const std::string& kernelRelease) {
    DriverVersion result;
    result.driver = fs.LinkBaseName("/sys/bus/pci/devices/" + address + "/driver");
    if (result.driver.empty()) return result;
    result.module = fs.LinkBaseName("/sys/bus/pci/drivers/" + result.driver + "/module");
    if (result.module.empty()) {
        // Built-in drivers often have no module link; their sysfs name uses '_'.
        result.module = result.driver;
        for (char& c : result.module)
            if (c == '-') c = '_';
    }
    const std::string moduleDir = "/sys/module/" + result.module;
    std::string version = fs.ReadLineOr(moduleDir + "/version");
    if (!version.empty()) {
        result.version = version;
        result.source = "module";
        return result;
    }
    std::string taint = fs.ReadLineOr(moduleDir + "/taint");
    if (taint.find('O') != std::string::npos) return result;  // out-of-tree, version unknown
    if (!kernelRelease.empty()) {
        result.version = kernelRelease;
        result.source = "kernel";
    }
    return result;
}

void CollectPciInventory(const ModuleOptions& options, SvmDocument& doc) {
    Sysfs fs(options.root);
    std::vector<std::string> addresses;
    std::string error;
    if (!fs.ListDir("/sys/bus/pci/devices", addresses, error)) {
        doc.AddFailure("PCI inventory: " + error);
        return;
    }

    std::vector<PciFunction> functions;
    for (const std::string& address : addresses) {
        PciFunction fn;
        if (!ReadPciFunction(fs, address, fn, error)) {
            doc.AddFailure("PCI inventory: " + error);
            continue;
        }
        functions.push_back(fn);
    }

    PciIdDatabase ids;
    for (const PciFunction& fn : functions) ids.Want(fn.vendor, fn.deviceId, fn.classCode);
    ids.Load(fs);

    const std::string kernel = KernelRelease(fs);
    for (const PciFunction& fn : functions) {
        const PciDeviceInfo info = DescribePciFunction(fn, ids);
        SvmDocument::DeviceRef device = doc.AddPciDevice(info);

        DriverVersion driver = ReadDriverVersion(fs, fn.address, kernel);
        if (!driver.driver.empty() && !driver.version.empty())
            doc.AddApplication(device, {"DRVR", driver.version, driver.driver});
    }
}

}  // namespace svm
