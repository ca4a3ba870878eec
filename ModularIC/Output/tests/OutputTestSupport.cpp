#include "OutputTestSupport.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "QVROutputClock.h"

namespace outtest {

FixedClock::FixedClock() : m_hadTZ(std::getenv("TZ") != nullptr) {
    if (m_hadTZ) m_oldTZ = std::getenv("TZ");
    setenv("TZ", "UTC", 1);
    tzset();
    QVROutputClock::SetSource([] { return static_cast<std::time_t>(1456827725); });
}

FixedClock::~FixedClock() {
    QVROutputClock::SetSource(nullptr);
    if (m_hadTZ)
        setenv("TZ", m_oldTZ.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

TempDir::TempDir() {
    std::string pattern = std::filesystem::temp_directory_path().string() + "/qvr_output_XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string CaptureStdout(const std::function<void()>& action) {
    std::string path = std::filesystem::temp_directory_path().string() + "/qvr_stdout_XXXXXX";
    const int fd = mkstemp(path.data());
    if (fd < 0) throw std::runtime_error("mkstemp failed");
    std::cout.flush();
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    dup2(fd, STDOUT_FILENO);
    close(fd);
    action();
    std::cout.flush();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    const std::string text = ReadFile(path);
    std::remove(path.c_str());
    return text;
}

std::string ReadFile(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

bool FileExists(const std::string& path) { return std::filesystem::exists(path); }

std::string Utf16LeWithBom(const std::string& ascii) {
    std::string bytes("\xFF\xFE", 2);
    for (char c : ascii) bytes += std::string{c, '\0'};
    return bytes;
}

CDeviceInfo* MakePCIDevice(const std::string& display, const std::string& componentID,
                           const std::string& enumId, unsigned char bus, unsigned char device,
                           unsigned char function) {
    CDeviceInfo* record = MakeNonPCIDevice("NOT-USED-FOR-PCI", "NOT-USED-EITHER", enumId, "");
    record->setDeviceType(QVR_DEVICE_PCI);
    SPCIInfo pci;
    pci.componentID = componentID;
    pci.deviceID = "DID";
    pci.subDeviceID = "SDID";
    pci.vendorID = "VID";
    pci.subVendorID = "SVID";
    pci.display = display;
    record->setPCIInfo(pci);
    record->setBDFInfo(bus, device, function);
    record->setDisplay("DISPLAY");
    record->setVersion("16.5.0");
    record->setComponentType("FRMW");
    return record;
}

CDeviceInfo* MakeNonPCIDevice(const std::string& name, const std::string& componentID,
                              const std::string& enumId, const std::string& fqdd) {
    CDeviceInfo* record = new CDeviceInfo();
    record->setStatus(QVR_STATUS_SUCCESS);
    record->setDeviceType(QVR_DEVICE_NONPCI);
    record->setDeviceName(name);
    record->setComponentID(componentID);
    record->setEnumId(enumId);
    record->setFQDDInfo(fqdd);
    record->setDisplay("BIOS DISPLAY");
    record->setVersion("2.1.7");
    record->setComponentType("BIOS");
    return record;
}

CDeviceInfo* MakeError(const std::string& display, const std::string& message) {
    CDeviceInfo* record = new CDeviceInfo();
    record->setStatus(QVR_STATUS_FAILURE);
    record->setDisplay(display);
    record->setErrorMsg(message);
    return record;
}

void AddOperatingSystem(QVRDataModel& model, bool full) {
    SOSInfo os;
    os.osVendor = "VENDOR";
    os.osArch = "x64";
    os.majorVersion = "7";
    os.minorVersion = "2";
    os.osCode = "RHEL7";
    if (full) {
        os.spMajorVersion = "1";
        os.spMinorVersion = "0";
        os.name = "Linux";
        os.buildNumber = "1234";
    }
    CDeviceInfo record;
    record.setDependencyOS(std::vector<SOSInfo>(1, os));
    model.AddOperatingSystemInfo(&record);
}

void AddSystem(QVRDataModel& model, const std::string& systemID) {
    QVRCSystemInfo system;
    system.setSystemInfo(systemID);
    CDeviceInfo record;
    record.setSystemInfo(system);
    model.AddSystemInfo(&record);
}

}  // namespace outtest
