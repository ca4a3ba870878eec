#include "OutputTestSupport.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "QVROutputClock.h"

namespace outtest {

FixedClock::FixedClock() : hadTZ(std::getenv("TZ") != nullptr) {
    if (hadTZ) oldTZ = std::getenv("TZ");
    setenv("TZ", "UTC", 1);
    tzset();
    QVROutputClock::SetSource([] { return static_cast<std::time_t>(1456827725); });
}

FixedClock::~FixedClock() {
    QVROutputClock::SetSource(nullptr);
    hadTZ ? setenv("TZ", oldTZ.c_str(), 1) : unsetenv("TZ");
    tzset();
}

TempDir::TempDir() : path(std::filesystem::temp_directory_path().string() + "/qvr_output_XXXXXX") {
    if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string CaptureStdout(const std::function<void()>& action) {
    ::testing::internal::CaptureStdout();
    action();
    std::cout.flush();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
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
    record->setPCIInfo(SPCIInfo{componentID, "DID", "SDID", "VID", "SVID", display});
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
    const SOSInfo os = full ? SOSInfo{"VENDOR", "x64", "7", "2", "1", "0", "Linux", "1234", "RHEL7"}
                            : SOSInfo{"VENDOR", "x64", "7", "2", "", "", "", "", "RHEL7"};
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
