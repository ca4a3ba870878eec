#include "OutputTestSupport.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "QVROutputClock.h"

namespace outtest {

namespace {
std::time_t FixedNow() { return kFixedTime; }
}  // namespace

FixedClock::FixedClock() : m_hadTZ(false) {
    const char* tz = std::getenv("TZ");
    if (tz != nullptr) {
        m_hadTZ = true;
        m_oldTZ = tz;
    }
    setenv("TZ", "UTC", 1);
    tzset();
    QVROutputClock::SetSource(&FixedNow);
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
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    m_path = buffer.data();
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

StdoutCapture::StdoutCapture() : m_savedFd(-1), m_done(false) {
    std::string pattern = std::filesystem::temp_directory_path().string() + "/qvr_stdout_XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    const int fd = mkstemp(buffer.data());
    if (fd < 0) throw std::runtime_error("mkstemp failed");
    m_path = buffer.data();
    std::cout.flush();
    std::fflush(stdout);
    m_savedFd = dup(STDOUT_FILENO);
    dup2(fd, STDOUT_FILENO);
    close(fd);
}

std::string StdoutCapture::Finish() {
    if (m_done) return std::string();
    std::cout.flush();
    std::fflush(stdout);
    dup2(m_savedFd, STDOUT_FILENO);
    close(m_savedFd);
    m_done = true;
    const std::string text = ReadFile(m_path);
    std::remove(m_path.c_str());
    return text;
}

StdoutCapture::~StdoutCapture() { Finish(); }

std::string ReadFile(const std::string& path) {
    std::ifstream file(path.c_str(), std::ios::in | std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

bool FileExists(const std::string& path) { return std::filesystem::exists(path); }

void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream file(path.c_str(), std::ios::out | std::ios::binary | std::ios::trunc);
    file << content;
}

std::string Utf16LeWithBom(const std::string& ascii) {
    std::string bytes("\xFF\xFE", 2);
    for (char c : ascii) {
        bytes.push_back(c);
        bytes.push_back('\0');
    }
    return bytes;
}

CDeviceInfo* MakePCIDevice(const std::string& display, const std::string& componentID, const std::string& enumId,
                           unsigned char bus, unsigned char device, unsigned char function) {
    CDeviceInfo* record = new CDeviceInfo();
    record->setStatus(QVR_STATUS_SUCCESS);
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
    record->setEnumId(enumId);
    record->setDeviceName("NOT-USED-FOR-PCI");
    record->setComponentID("NOT-USED-EITHER");
    record->setDisplay("DISPLAY");
    record->setVersion("16.5.0");
    record->setComponentType("FRMW");
    return record;
}

CDeviceInfo* MakeNonPCIDevice(const std::string& name, const std::string& componentID, const std::string& enumId,
                              const std::string& fqdd) {
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
