#include "NicInventory.h"

#include <cerrno>
#include <set>
#include <vector>

#include "svm/PciIdDatabase.h"
#include "svm/TextUtil.h"

namespace svm {
namespace {

bool HasFirmware(const std::string& version) {
    std::string v = ToLower(Trim(version));
    return !v.empty() && v != "n/a" && v != "na" && v != "none" && v != "unknown";
}

struct Adapter {
    std::string ifname;
    EthtoolDrvInfo drv;
    PciFunction pci;
    bool isPci = false;
};

}  // namespace

void CollectNicInventory(const ModuleOptions& options, SvmDocument& doc, IEthtool& ethtool) {
    Sysfs fs(options.root);
    std::vector<std::string> interfaces;
    std::string error;
    if (!fs.ListDir("/sys/class/net", interfaces, error)) {
        doc.AddFailure("Network adapter inventory: " + error);
        return;
    }

    std::vector<Adapter> adapters;
    std::set<std::string> seen;
    for (const std::string& ifname : interfaces) {
        if (!fs.Exists("/sys/class/net/" + ifname + "/device")) continue;  // virtual interface
        Adapter a;
        a.ifname = ifname;
        int rc = ethtool.GetDrvInfo(ifname, a.drv, error);
        // No ethtool support, or the interface went away meanwhile: nothing to tell.
        if (rc == EOPNOTSUPP || rc == ENODEV) continue;
        if (rc != 0) {
            doc.AddFailure("Network adapter inventory: " + error);
            continue;
        }
        if (!HasFirmware(a.drv.fwVersion)) continue;
        std::string bus = Trim(a.drv.busInfo);
        PciFunction fn;
        if (ParsePciAddress(bus, fn) && fs.IsDirectory("/sys/bus/pci/devices/" + fn.address)) {
            // An SR-IOV virtual function (linked to its physical function as "physfn")
            // runs the physical function's firmware and has none of its own.
            if (fs.Exists("/sys/bus/pci/devices/" + fn.address + "/physfn")) continue;
            if (!ReadPciFunction(fs, fn.address, a.pci, error)) {
                doc.AddFailure("Network adapter inventory: " + error);
                continue;
            }
            a.isPci = true;
            if (!seen.insert(fn.address).second) continue;
        } else {
            if (bus.empty() || ToLower(bus) == "n/a") continue;  // nothing stable to name it by
            if (!seen.insert("bus:" + bus).second) continue;
        }
        adapters.push_back(a);
    }

    PciIdDatabase ids;
    for (const Adapter& a : adapters)
        if (a.isPci) ids.Want(a.pci.vendor, a.pci.deviceId, a.pci.classCode);
    if (!adapters.empty()) ids.Load(fs);

    for (const Adapter& a : adapters) {
        SvmDocument::DeviceRef device;
        std::string display;
        if (a.isPci) {
            const PciDeviceInfo info = DescribePciFunction(a.pci, ids);
            display = info.display;
            device = doc.AddPciDevice(info);
        } else {
            NonPciDeviceInfo info;
            info.display =
                a.drv.driver.empty() ? "Network adapter" : "Network adapter (" + a.drv.driver + ")";
            info.fqdd = "NIC." + Trim(a.drv.busInfo);
            display = info.display;
            device = doc.AddNonPciDevice(info);
        }
        doc.AddApplication(device, {"FRMW", a.drv.fwVersion, display});
    }
}

}  // namespace svm
