#include "svm/PciIdDatabase.h"

#include <cstring>

#include "svm/TextUtil.h"

namespace svm {
namespace {

// Base classes and the most common sub-classes, for machines without the
// database.
struct ClassEntry {
    uint16_t code;  // (base << 8) | sub; sub 0xff stands for the base alone
    const char* name;
};

const ClassEntry kBuiltinClasses[] = {
    {0x00ff, "Unclassified device"},
    {0x01ff, "Mass storage controller"},
    {0x0100, "SCSI storage controller"},
    {0x0101, "IDE interface"},
    {0x0104, "RAID bus controller"},
    {0x0106, "SATA controller"},
    {0x0107, "Serial Attached SCSI controller"},
    {0x0108, "Non-Volatile memory controller"},
    {0x02ff, "Network controller"},
    {0x0200, "Ethernet controller"},
    {0x0207, "Infiniband controller"},
    {0x03ff, "Display controller"},
    {0x0300, "VGA compatible controller"},
    {0x04ff, "Multimedia controller"},
    {0x05ff, "Memory controller"},
    {0x06ff, "Bridge"},
    {0x0600, "Host bridge"},
    {0x0601, "ISA bridge"},
    {0x0604, "PCI bridge"},
    {0x07ff, "Communication controller"},
    {0x08ff, "Generic system peripheral"},
    {0x09ff, "Input device controller"},
    {0x0aff, "Docking station"},
    {0x0bff, "Processor"},
    {0x0cff, "Serial bus controller"},
    {0x0c03, "USB controller"},
    {0x0c04, "Fibre Channel"},
    {0x0c05, "SMBus"},
    {0x0dff, "Wireless controller"},
    {0x0eff, "Intelligent controller"},
    {0x0fff, "Satellite communications controller"},
    {0x10ff, "Encryption controller"},
    {0x11ff, "Signal processing controller"},
    {0x12ff, "Processing accelerators"},
    {0x13ff, "Non-Essential Instrumentation"},
    {0x40ff, "Coprocessor"},
    {0xffff, "Unassigned class"},
};

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Reads exactly n hex digits at p; -1 when they are not all hex.
long HexAt(const char* p, const char* end, int n) {
    if (end - p < n) return -1;
    long v = 0;
    for (int i = 0; i < n; ++i) {
        int d = HexDigit(p[i]);
        if (d < 0) return -1;
        v = (v << 4) | d;
    }
    return v;
}

// The name after the id and its separating blanks.
std::string NameAfter(const char* p, const char* end) {
    while (p < end && (*p == ' ' || *p == '\t')) ++p;
    return Trim(std::string(p, static_cast<size_t>(end - p)));
}

}  // namespace

void PciIdDatabase::Want(uint16_t vendor, uint16_t device, uint32_t classCode) {
    m_wantVendors.insert(vendor);
    m_wantDevices.insert({vendor, device});
    m_wantClasses.insert(static_cast<uint8_t>(classCode >> 16));
}

bool PciIdDatabase::Load(const Sysfs& fs) {
    for (const char* path : {"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"}) {
        if (LoadFile(fs.Path(path))) return true;
    }
    return false;
}

bool PciIdDatabase::LoadFile(const std::string& path) {
    Sysfs raw("/");
    std::string content, error;
    if (!raw.ReadFile(path, content, error, 64u << 20)) return false;
    Scan(content.data(), content.size());
    m_loadedFrom = path;
    return true;
}

void PciIdDatabase::Scan(const char* data, size_t size) {
    const char* p = data;
    const char* end = data + size;
    enum { kNone, kVendor, kClass } section = kNone;
    long vendor = -1;
    bool vendorWanted = false;
    long baseClass = -1;
    bool classWanted = false;
    while (p < end) {
        const char* nl = static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(end - p)));
        const char* lineEnd = nl ? nl : end;
        const char* line = p;
        p = nl ? nl + 1 : end;
        if (line == lineEnd || *line == '#') continue;
        if (*line != '\t') {
            if (*line == 'C' && lineEnd - line > 2 && line[1] == ' ') {
                section = kClass;
                baseClass = HexAt(line + 2, lineEnd, 2);
                classWanted = baseClass >= 0 && m_wantClasses.count(static_cast<uint8_t>(baseClass));
                if (classWanted) m_classes[static_cast<uint8_t>(baseClass)] = NameAfter(line + 4, lineEnd);
                continue;
            }
            long v = HexAt(line, lineEnd, 4);
            if (v >= 0 && (lineEnd - line == 4 || line[4] == ' ')) {
                section = kVendor;
                vendor = v;
                vendorWanted = m_wantVendors.count(static_cast<uint16_t>(v)) > 0;
                if (vendorWanted) m_vendors[static_cast<uint16_t>(v)] = NameAfter(line + 4, lineEnd);
            } else {
                section = kNone;  // another list (device types, languages, ...)
            }
            continue;
        }
        if (line + 1 < lineEnd && line[1] == '\t') continue;  // subsystem or programming interface
        if (section == kVendor && vendorWanted) {
            long d = HexAt(line + 1, lineEnd, 4);
            auto key = std::make_pair(static_cast<uint16_t>(vendor), static_cast<uint16_t>(d));
            if (d >= 0 && m_wantDevices.count(key)) m_devices[key] = NameAfter(line + 5, lineEnd);
        } else if (section == kClass && classWanted) {
            long s = HexAt(line + 1, lineEnd, 2);
            if (s >= 0)
                m_subclasses[static_cast<uint16_t>((baseClass << 8) | s)] = NameAfter(line + 3, lineEnd);
        }
    }
}

std::string PciIdDatabase::VendorName(uint16_t vendor) const {
    auto it = m_vendors.find(vendor);
    return it == m_vendors.end() ? std::string() : it->second;
}

std::string PciIdDatabase::DeviceName(uint16_t vendor, uint16_t device) const {
    auto it = m_devices.find({vendor, device});
    return it == m_devices.end() ? std::string() : it->second;
}

std::string PciIdDatabase::ClassName(uint32_t classCode) const {
    uint8_t base = static_cast<uint8_t>(classCode >> 16);
    uint16_t sub = static_cast<uint16_t>((classCode >> 8) & 0xffff);
    auto s = m_subclasses.find(sub);
    if (s != m_subclasses.end() && !s->second.empty()) return s->second;
    auto b = m_classes.find(base);
    if (b != m_classes.end() && !b->second.empty()) return b->second;
    const char* baseName = nullptr;
    for (const ClassEntry& e : kBuiltinClasses) {
        if (e.code == sub && base != 0xff) return e.name;
        if (e.code == ((base << 8) | 0xff)) baseName = e.name;
    }
    return baseName ? baseName : std::string();
}

std::string PciIdDatabase::DisplayName(uint16_t vendor, uint16_t device, uint32_t classCode) const {
    std::string deviceName = DeviceName(vendor, device);
    if (!deviceName.empty()) {
        std::string vendorName = VendorName(vendor);
        return vendorName.empty() ? deviceName : vendorName + " " + deviceName;
    }
    std::string className = ClassName(classCode);
    if (!className.empty()) return className;
    return "PCI device " + FormatHex(vendor, 4) + ":" + FormatHex(device, 4);
}

bool ParsePciAddress(const std::string& text, PciFunction& out) {
    // [dddd:]bb:dd.f
    std::vector<std::string> parts = Split(text, ':');
    if (parts.size() == 2) parts.insert(parts.begin(), "0000");
    if (parts.size() != 3) return false;
    size_t dot = parts[2].find('.');
    if (dot == std::string::npos) return false;
    std::string dev = parts[2].substr(0, dot);
    std::string fn = parts[2].substr(dot + 1);
    uint32_t domain, bus, device, function;
    if (parts[0].size() < 4 || parts[0].size() > 8 || parts[1].size() != 2 || dev.size() != 2 ||
        fn.size() != 1)
        return false;
    if (!ParseHex(parts[0], domain) || !ParseHex(parts[1], bus) || !ParseHex(dev, device) ||
        !ParseHex(fn, function))
        return false;
    if (parts[0].find_first_of("xX") != std::string::npos || device > 0x1f || function > 7) return false;
    out.domain = domain;
    out.bus = bus;
    out.device = device;
    out.function = function;
    out.address = FormatHex(domain, 4) + ":" + FormatHex(bus, 2) + ":" + FormatHex(device, 2) + "." +
                  FormatHex(function, 1);
    return true;
}

bool ReadPciFunction(const Sysfs& fs, const std::string& address, PciFunction& out, std::string& error) {
    if (!ParsePciAddress(address, out)) {
        error = "unexpected PCI address " + address;
        return false;
    }
    out.address = address;
    const std::string dir = "/sys/bus/pci/devices/" + address + "/";
    auto readId = [&](const char* file, uint32_t& value, bool required) {
        std::string text;
        if (!fs.ReadLine(dir + file, text, error)) {
            if (required) return false;
            value = 0;
            return true;
        }
        if (!ParseHex(text, value)) {
            error = "unexpected content \"" + text + "\" in " + dir + file;
            return false;
        }
        return true;
    };
    uint32_t vendor, device, subVendor, subDevice, classCode;
    if (!readId("vendor", vendor, true) || !readId("device", device, true) ||
        !readId("subsystem_vendor", subVendor, false) || !readId("subsystem_device", subDevice, false) ||
        !readId("class", classCode, false))
        return false;
    out.vendor = static_cast<uint16_t>(vendor);
    out.deviceId = static_cast<uint16_t>(device);
    out.subVendor = static_cast<uint16_t>(subVendor);
    out.subDevice = static_cast<uint16_t>(subDevice);
    out.classCode = classCode;
    return true;
}

PciDeviceInfo DescribePciFunction(const PciFunction& fn, const PciIdDatabase& ids) {
    PciDeviceInfo info;
    info.vendorID = FormatHex(fn.vendor, 4);
    info.deviceID = FormatHex(fn.deviceId, 4);
    info.subVendorID = FormatHex(fn.subVendor, 4);
    info.subDeviceID = FormatHex(fn.subDevice, 4);
    info.display = ids.DisplayName(fn.vendor, fn.deviceId, fn.classCode);
    info.enumId = fn.address;
    info.bus = fn.bus;
    info.device = fn.device;
    info.function = fn.function;
    return info;
}

}  // namespace svm
