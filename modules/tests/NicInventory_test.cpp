#include "NicInventory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>

#include "ModuleTestSupport.h"

using svmtest::Collect;
using svmtest::Failures;
using svmtest::Select;

namespace svm {
namespace {

// Answers ETHTOOL_GDRVINFO from a table; unknown interfaces fail with ENODEV.
struct FakeEthtool : IEthtool {
    std::map<std::string, EthtoolDrvInfo> answers;
    std::map<std::string, int> failures;
    std::vector<std::string> asked;
    int GetDrvInfo(const std::string& ifname, EthtoolDrvInfo& info, std::string& error) override {
        asked.push_back(ifname);
        error = "ETHTOOL_GDRVINFO on " + ifname + ": fake failure";
        if (failures.count(ifname)) return failures[ifname];
        if (!answers.count(ifname)) return ENODEV;
        info = answers[ifname];
        return 0;
    }
};

class NicInventoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        root.AddPciFunction("0000:3b:00.0", "0x14e4", "0x16d7", "0x14e4", "0x4140", "0x020000");
        root.AddPciFunction("0000:3b:00.1", "0x14e4", "0x16d7", "0x14e4", "0x4140", "0x020000");
        Interface("eno1", "pci0000:00/0000:3b:00.0", "0000:3b:00.0");
        Interface("eno2", "pci0000:00/0000:3b:00.1", "0000:3b:00.1");
        root.MakeDir("/sys/devices/virtual/net/lo");
        root.Link("../../devices/virtual/net/lo", "/sys/class/net/lo");
    }
    void Interface(const std::string& name, const std::string& device, const std::string& bus,
                   const std::string& firmware = "222.0.144.0/pkg 22.21.06.80") {
        root.MakeDir("/sys/devices/" + device);
        root.Link("../../../devices/" + device, "/sys/class/net/" + name + "/device");
        ethtool.answers[name] = {"bnxt_en", "6.1.0", firmware, bus};
    }
    svmtest::FakeRoot root;
    FakeEthtool ethtool;
};

TEST_F(NicInventoryTest, FirmwareGoesOnThePciFunctionOfItsBusAddressOnce) {
    Interface("eno1d1", "pci0000:00/0000:3b:00.0", "0000:3b:00.0");  // shares eno1's function
    const std::string xml = Collect(CollectNicInventory, root, ethtool);
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(2u, devices.size()) << xml;
    EXPECT_EQ("14e4 16d7 4140 3b 0", devices[0]["vendorID"] + " " + devices[0]["deviceID"] + " " +
                                         devices[0]["subDeviceID"] + " " + devices[0]["bus"] + " " +
                                         devices[0]["function"]);
    EXPECT_EQ("1", devices[1]["function"]);
    auto apps = Select(xml, "/SVMInventory/Device/Application");
    EXPECT_EQ("FRMW 222.0.144.0/pkg 22.21.06.80", apps[0]["componentType"] + " " + apps[0]["version"]);
    EXPECT_EQ((std::vector<std::string>{"eno1", "eno1d1", "eno2"}), ethtool.asked);  // never lo
    EXPECT_TRUE(Failures(xml).empty());
}

TEST_F(NicInventoryTest, WhatIsNotReportedAsAPciDevice) {
    ethtool.answers["eno1"].fwVersion = "N/A";
    ethtool.answers["eno2"].busInfo = "0000:5e:00.0";  // not in the PCI tree
    Interface("usb0", "usb1/1-1", "");                 // no bus address
    Interface("usb1", "usb1/1-2", "usb-0000:00:14.0-1", "rtl8153a-4");
    const std::string xml = Collect(CollectNicInventory, root, ethtool);
    EXPECT_EQ(0u, Select(xml, "//Device[@vendorID]").size()) << xml;
    EXPECT_EQ(1u, Select(xml, "/SVMInventory/Device[@FQDD='NIC.usb-0000:00:14.0-1']").size()) << xml;
    EXPECT_TRUE(Failures(xml).empty());
}

TEST_F(NicInventoryTest, IoctlFailuresAreReportedUnlessUnsupported) {
    ethtool.failures["eno1"] = EOPNOTSUPP;
    ethtool.failures["eno2"] = EPERM;
    auto failures = Failures(Collect(CollectNicInventory, root, ethtool));
    ASSERT_EQ(1u, failures.size());
    EXPECT_NE(std::string::npos, failures[0].find("eno2"));
    svmtest::FakeRoot empty;
    EXPECT_EQ(1u, Failures(Collect(CollectNicInventory, empty, ethtool)).size());
}

}  // namespace
}  // namespace svm
