#include "NicInventory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>

#include "ModuleTestSupport.h"

using svmtest::FakeRoot;
using svmtest::Select;

namespace svm {
namespace {

// Answers ETHTOOL_GDRVINFO from a table; unknown interfaces fail with ENODEV.
class FakeEthtool : public IEthtool {
  public:
    std::map<std::string, EthtoolDrvInfo> answers;
    std::map<std::string, int> failures;
    std::vector<std::string> asked;

    int GetDrvInfo(const std::string& ifname, EthtoolDrvInfo& info, std::string& error) override {
        asked.push_back(ifname);
        auto f = failures.find(ifname);
        if (f != failures.end()) {
            error = "ioctl SIOCETHTOOL ETHTOOL_GDRVINFO on " + ifname + ": fake failure";
            return f->second;
        }
        auto it = answers.find(ifname);
        if (it == answers.end()) {
            error = "no such device";
            return ENODEV;
        }
        info = it->second;
        return 0;
    }
};

class NicInventoryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root.AddPciFunction("0000:3b:00.0", "0x14e4", "0x16d7", "0x14e4", "0x4140", "0x020000");
        root.AddPciFunction("0000:3b:00.1", "0x14e4", "0x16d7", "0x14e4", "0x4140", "0x020000");
        AddInterface("eno1", "../../../devices/pci0000:00/0000:3b:00.0");
        AddInterface("eno2", "../../../devices/pci0000:00/0000:3b:00.1");
        root.MakeDir("/sys/devices/virtual/net/lo");
        root.Link("../../devices/virtual/net/lo", "/sys/class/net/lo");
        ethtool.answers["eno1"] = {"bnxt_en", "6.1.0", "222.0.144.0/pkg 22.21.06.80", "0000:3b:00.0"};
        ethtool.answers["eno2"] = {"bnxt_en", "6.1.0", "222.0.144.0/pkg 22.21.06.80", "0000:3b:00.1"};
    }

    // deviceLink is relative to /sys/class/net/<name>; its target is created.
    void AddInterface(const std::string& name, const std::string& deviceLink) {
        root.MakeDir("/sys/class/net/" + name);
        root.MakeDir("/sys/class/net/" + name + "/" + deviceLink);
        root.Link(deviceLink, "/sys/class/net/" + name + "/device");
    }

    std::string Collect() {
        SvmDocument doc;
        ModuleOptions options;
        options.root = root.Path();
        CollectNicInventory(options, doc, ethtool);
        return doc.ToString();
    }

    FakeRoot root;
    FakeEthtool ethtool;
};

TEST_F(NicInventoryTest, FirmwareGoesOnThePciFunctionOfItsBusAddress) {
    std::string xml = Collect();
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(2u, devices.size()) << xml;
    EXPECT_EQ("14e4", devices[0]["vendorID"]);
    EXPECT_EQ("16d7", devices[0]["deviceID"]);
    EXPECT_EQ("4140", devices[0]["subDeviceID"]);
    EXPECT_EQ("3b", devices[0]["bus"]);
    EXPECT_EQ("0", devices[0]["function"]);
    EXPECT_EQ("1", devices[1]["function"]);
    auto apps = Select(xml, "/SVMInventory/Device/Application");
    ASSERT_EQ(2u, apps.size());
    EXPECT_EQ("FRMW", apps[0]["componentType"]);
    EXPECT_EQ("222.0.144.0/pkg 22.21.06.80", apps[0]["version"]);
    EXPECT_EQ(0u, Select(xml, "//SPStatus").size());
}

TEST_F(NicInventoryTest, VirtualInterfacesAreNeverAsked) {
    Collect();
    EXPECT_EQ((std::vector<std::string>{"eno1", "eno2"}), ethtool.asked);
}

TEST_F(NicInventoryTest, InterfacesSharingAFunctionAreReportedOnce) {
    AddInterface("eno1d1", "../../../devices/pci0000:00/0000:3b:00.0");
    ethtool.answers["eno1d1"] = ethtool.answers["eno1"];
    EXPECT_EQ(2u, Select(Collect(), "/SVMInventory/Device").size());
}

TEST_F(NicInventoryTest, NoFirmwareOrNonPciWithoutBusMeansNoDevice) {
    ethtool.answers["eno1"].fwVersion = "N/A";
    ethtool.answers["eno2"].fwVersion = "";
    AddInterface("usb0", "../../../devices/usb1/1-1");
    ethtool.answers["usb0"] = {"cdc_ether", "6.1.0", "1.0", ""};
    std::string xml = Collect();
    EXPECT_EQ(0u, Select(xml, "//Device").size()) << xml;
    EXPECT_EQ(0u, Select(xml, "//SPStatus").size());
    EXPECT_EQ(3u, ethtool.asked.size());
}

TEST_F(NicInventoryTest, NonPciAdapterWithFirmwareIsANonPciDevice) {
    AddInterface("usb0", "../../../devices/usb1/1-1");
    ethtool.answers["usb0"] = {"r8152", "6.1.0", "rtl8153a-4", "usb-0000:00:14.0-1"};
    auto devices = Select(Collect(), "/SVMInventory/Device[@FQDD]");
    ASSERT_EQ(1u, devices.size());
    EXPECT_EQ("NIC.usb-0000:00:14.0-1", devices[0]["FQDD"]);
    EXPECT_EQ(0u, devices[0].count("vendorID"));
}

TEST_F(NicInventoryTest, BusAddressNotInThePciTreeIsNotReportedAsPci) {
    ethtool.answers["eno2"].busInfo = "0000:5e:00.0";  // no such function
    std::string xml = Collect();
    EXPECT_EQ(1u, Select(xml, "//Device[@vendorID]").size());
}

TEST_F(NicInventoryTest, IoctlFailureOnAPhysicalInterfaceIsReported) {
    ethtool.failures["eno2"] = EPERM;
    std::string xml = Collect();
    EXPECT_EQ(1u, Select(xml, "//Device").size());
    auto status = Select(xml, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("eno2"));
}

TEST_F(NicInventoryTest, UnsupportedIoctlIsSkippedSilently) {
    ethtool.failures["eno2"] = EOPNOTSUPP;
    std::string xml = Collect();
    EXPECT_EQ(1u, Select(xml, "//Device").size());
    EXPECT_EQ(0u, Select(xml, "//SPStatus").size());
}

TEST(NicInventoryFailureTest, MissingNetClassIsReported) {
    FakeRoot root;
    FakeEthtool ethtool;
    SvmDocument doc;
    ModuleOptions options;
    options.root = root.Path();
    CollectNicInventory(options, doc, ethtool);
    EXPECT_EQ(1u, Select(doc.ToString(), "/SVMInventory/SPStatus[@result='false']/Message").size());
}

}  // namespace
}  // namespace svm
