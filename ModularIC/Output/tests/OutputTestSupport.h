#ifndef OUTPUTTESTSUPPORT_H
#define OUTPUTTESTSUPPORT_H

#include <functional>
#include <string>

#include "CDeviceInfo.h"
#include "QVRArgumentList.h"
#include "QVRDataModel.h"

namespace outtest {

// A clock fixed at 2016-03-01 10:22:05 UTC, in the UTC zone, for the life of the object.
struct FixedClock {
    FixedClock();
    ~FixedClock();
    std::string oldTZ;
    bool hadTZ;
};

// A fresh directory removed with its files on destruction.
struct TempDir {
    TempDir();
    ~TempDir();
    std::string Path(const std::string& name) const { return path + "/" + name; }
    std::string path;
};

// Everything written to descriptor 1 while action runs.
std::string CaptureStdout(const std::function<void()>& action);
std::string ReadFile(const std::string& path);
bool FileExists(const std::string& path);
// What a UTF-16LE encoder with a byte-order mark makes of ASCII text.
std::string Utf16LeWithBom(const std::string& ascii);

// Records as the data model files them.
CDeviceInfo* MakePCIDevice(const std::string& display, const std::string& componentID,
                           const std::string& enumId, unsigned char bus, unsigned char device,
                           unsigned char function);
CDeviceInfo* MakeNonPCIDevice(const std::string& name, const std::string& componentID,
                              const std::string& enumId, const std::string& fqdd);
CDeviceInfo* MakeError(const std::string& display, const std::string& message);
void AddOperatingSystem(QVRDataModel& model, bool full);
void AddSystem(QVRDataModel& model, const std::string& systemID);

}  // namespace outtest

#endif
