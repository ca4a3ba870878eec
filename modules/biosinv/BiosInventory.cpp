#include "BiosInventory.h"

#include <map>

#include "svm/TextUtil.h"

namespace svm {
namespace {

const char* const kDmiDir = "/sys/class/dmi/id/";

// Value after the colon of a "key<tabs>: value" line of /proc/cpuinfo.
bool CpuinfoField(const std::string& line, std::string& key, std::string& value) {
    size_t colon = line.find(':');
    if (colon == std::string::npos) return false;
    key = Trim(line.substr(0, colon));
    value = Trim(line.substr(colon + 1));
    return true;
}

}  // namespace

bool IsPlaceholder(const std::string& value) {
    std::string v = ToLower(Trim(value));
    static const char* const kPlaceholders[] = {"",
                                                "to be filled by o.e.m.",
                                                "default string",
                                                "system sku#",
                                                "system product name",
                                                "not specified",
                                                "not applicable",
                                                "none",
                                                "n/a",
                                                "0",
                                                "sku",
                                                "unknown",
                                                "123456789",
                                                "0123456789"};
    for (const char* p : kPlaceholders)
        if (v == p) return true;
    return false;
}

std::string ReadSystemId(const Sysfs& fs) {
    for (const char* file : {"product_sku", "product_name"}) {
        std::string value = CleanText(fs.ReadLineOr(std::string(kDmiDir) + file));
        if (!IsPlaceholder(value)) return value;
    }
    return std::string();
}

std::vector<SocketMicrocode> ParseMicrocode(const std::string& cpuinfo) {
    std::vector<SocketMicrocode> sockets;
    std::map<std::string, size_t> index;
    SocketMicrocode current;
    auto flush = [&]() {
        if (!current.revision.empty()) {
            std::string socket = current.socket.empty() ? "0" : current.socket;
            if (index.find(socket) == index.end()) {
                index[socket] = sockets.size();
                current.socket = socket;
                sockets.push_back(current);
            }
        }
        current = SocketMicrocode();
    };
    for (const std::string& line : Split(cpuinfo, '\n')) {
        std::string key, value;
        if (Trim(line).empty()) {
            flush();
            continue;
        }
        if (!CpuinfoField(line, key, value)) continue;
        if (key == "physical id")
            current.socket = value;
        else if (key == "model name")
            current.model = value;
        else if (key == "microcode")
            current.revision = value;
    }
    flush();
    return sockets;
}

void CollectBiosInventory(const ModuleOptions& options, SvmDocument& doc) {
    Sysfs fs(options.root);
    std::string error;

    std::string version;
    if (!fs.ReadLine(std::string(kDmiDir) + "bios_version", version, error)) {
        doc.AddFailure("BIOS inventory: " + error);
    } else if (CleanText(version).empty()) {
        doc.AddFailure("BIOS inventory: " + std::string(kDmiDir) + "bios_version is empty");
    } else {
        std::string vendor = CleanText(fs.ReadLineOr(std::string(kDmiDir) + "bios_vendor"));
        std::string date = CleanText(fs.ReadLineOr(std::string(kDmiDir) + "bios_date"));
        NonPciDeviceInfo info;
        info.componentID = "159";
        info.display = "BIOS";
        info.fqdd = "BIOS.System.1";
        std::string display = IsPlaceholder(vendor) ? "BIOS" : vendor + " BIOS";
        if (!IsPlaceholder(date)) display += " (" + date + ")";
        doc.AddApplication(doc.AddNonPciDevice(info), {"BIOS", version, display});
    }

    std::string systemId = ReadSystemId(fs);
    if (systemId.empty())
        doc.AddFailure("System inventory: no system identifier in " + std::string(kDmiDir) +
                       "product_sku or product_name");
    else
        doc.AddSystem(systemId);

    std::string cpuinfo;
    if (!fs.ReadFile("/proc/cpuinfo", cpuinfo, error)) {
        doc.AddFailure("Processor microcode inventory: " + error);
        return;
    }
    // Processors without loadable microcode have no "microcode" line: nothing to report.
    for (const SocketMicrocode& s : ParseMicrocode(cpuinfo)) {
        NonPciDeviceInfo info;
        info.display = s.model.empty() ? "Processor" : s.model;
        info.fqdd = "CPU.Socket." + s.socket;
        doc.AddApplication(doc.AddNonPciDevice(info), {"FRMW", s.revision, "Processor microcode"});
    }
}

}  // namespace svm
