#ifndef FAKEOSPROBE_H
#define FAKEOSPROBE_H

#include <string>

#include "IBQMOSProbe.h"

// An operating system described by a release file's first line and uname's
// system name.
class FakeOSProbe : public IBQMOSProbe {
  public:
    static FakeOSProbe Linux() { return FakeOSProbe("", "Linux"); }
    static FakeOSProbe Esx() { return FakeOSProbe("VMware ESX 4.1.0 (Kandinsky)", "Linux"); }
    static FakeOSProbe Esxi() { return FakeOSProbe("", "VMkernel"); }

    FakeOSProbe(const std::string& releaseLine, const std::string& systemName)
        : mReleaseLine(releaseLine), mSystemName(systemName) {}

    bool FileExists(const std::string&) override { return !mReleaseLine.empty(); }
    bool ReadFirstLine(const std::string&, std::size_t, std::string& line) override {
        line = mReleaseLine;
        return !mReleaseLine.empty();
    }
    bool Uname(std::string& systemName, std::string& release) override {
        systemName = mSystemName;
        release = "1.0";
        return true;
    }

  private:
    std::string mReleaseLine;
    std::string mSystemName;
};

#endif
