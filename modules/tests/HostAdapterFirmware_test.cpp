// Host adapter firmware from the scsi_host attributes of each driver, laid out as the kernel does.
#include "HostAdapterFirmware.h"

#include <array>
#include <filesystem>

#include "FirmwareInventory.h"
#include "ModuleTestSupport.h"

namespace {

using svmtest::FakeRoot;
using testing::ElementsAre;
using testing::HasSubstr;

// A SCSI host of driver on the PCI function at address, with its scsi_host attributes.
void AddHost(FakeRoot& root, const std::string& address, const std::string& host, const std::string& driver,
             const std::vector<std::pair<std::string, std::string>>& attributes) {
    const std::string dir = "/sys/devices/pci0000:00/" + address + "/" + host;
    root.Write(dir + "/scsi_host/" + host + "/proc_name", driver + "\n");
    for (const auto& [name, value] : attributes) root.Write(dir + "/scsi_host/" + host + "/" + name, value);
    root.Link("../../../" + host, dir + "/scsi_host/" + host + "/device");
    root.Link("../../devices/pci0000:00/" + address + "/" + host + "/scsi_host/" + host,
              "/sys/class/scsi_host/" + host);
}

std::vector<std::string> Hosts(const FakeRoot& root, std::vector<std::string>& failures) {
    std::vector<svm::HostAdapterFirmware> found;
    svm::CollectHostAdapterFirmware(svm::Sysfs(root.path), found, failures);
    std::vector<std::string> rows;
    for (const auto& fw : found) rows.push_back(fw.pci.address + " " + fw.version + " | " + fw.display);
    return rows;
}

// The attribute values in the shapes each driver prints them.
TEST(HostAdapterFirmwareTest, EachDriversOwnAttributeWithItsOtherImagesInTheDisplay) {
    FakeRoot root;
    AddHost(root, "0000:18:00.0", "host0", "mpt3sas",
            {{"version_fw", "16.00.12.00\n"}, {"version_bios", "09.47.00.00\n"}, {"version_mpi", "02.00\n"}});
    AddHost(root, "0000:19:00.0", "host1", "aacraid",
            {{"hba_kernel_version", "7.18-0[32114]\n"},
             {"hba_monitor_version", "7.18-0[32114]\n"},
             {"hba_bios_version", "7.18-0[32114]\n"},
             {"model", "ASR8405\n"}});
    AddHost(root, "0000:1a:00.0", "host2", "mptsas", {{"version_fw", "01.50.146.00\n"}});
    AddHost(root, "0000:3b:00.0", "host3", "qla2xxx", {{"fw_version", "9.08.02 (d0d5)\n"}});
    AddHost(root, "0000:3b:00.1", "host4", "lpfc", {{"fwrev", "12.8.351.47, sli-4:2:c\n"}});
    AddHost(root, "0000:5e:00.0", "host5", "hpsa", {{"firmware_revision", "8.32\n"}});
    AddHost(root, "0000:86:00.0", "host6", "smartpqi", {{"firmware_version", "5.61-0\n"}});
    AddHost(root, "0000:af:00.0", "host7", "megaraid_sas", {{"fw_crash_state", "0\n"}});  // publishes none
    std::vector<std::string> failures;
    EXPECT_THAT(Hosts(root, failures),
                ElementsAre("0000:18:00.0 16.00.12.00 | Storage adapter firmware (mpt3sas): BIOS 09.47.00.00",
                            "0000:19:00.0 7.18-0[32114] | Storage adapter firmware (aacraid): monitor "
                            "7.18-0[32114], BIOS 7.18-0[32114]",
                            "0000:1a:00.0 01.50.146.00 | Storage adapter firmware (mptsas)",
                            "0000:3b:00.0 9.08.02 (d0d5) | Storage adapter firmware (qla2xxx)",
                            "0000:3b:00.1 12.8.351.47, sli-4:2:c | Storage adapter firmware (lpfc)",
                            "0000:5e:00.0 8.32 | Storage adapter firmware (hpsa)",
                            "0000:86:00.0 5.61-0 | Storage adapter firmware (smartpqi)"));
    EXPECT_THAT(failures, ElementsAre());
}

TEST(HostAdapterFirmwareTest, AnUnreadableOrEmptyAttributeIsAFailureNamingItAbsentSysfsIsSilent) {
    FakeRoot root;
    std::vector<std::string> failures;
    EXPECT_THAT(Hosts(root, failures), ElementsAre());
    EXPECT_THAT(failures, ElementsAre());
    AddHost(root, "0000:18:00.0", "host0", "mpt3sas", {{"version_fw/", ""}});  // a directory: unreadable
    AddHost(root, "0000:19:00.0", "host1", "lpfc", {{"fwrev", "\n"}});
    AddHost(root, "0000:1a:00.0", "host2", "hpsa", {{"firmware_revision", "8.32\n"}});
    EXPECT_THAT(Hosts(root, failures), ElementsAre("0000:1a:00.0 8.32 | Storage adapter firmware (hpsa)"));
    EXPECT_THAT(failures, ElementsAre(HasSubstr("/sys/class/scsi_host/host0/version_fw"),
                                      HasSubstr("/sys/class/scsi_host/host1/fwrev: empty")));
}

// The firmware inventory puts each adapter's firmware on its PCI device.
struct NoTpm : svm::ITpmDevice {
    int Transact(const std::string&, const std::vector<uint8_t>&, std::vector<uint8_t>&,
                 std::string&) override {
        ADD_FAILURE() << "no TPM to ask";
        return ENOENT;
    }
};

TEST(HostAdapterFirmwareTest, TheInventoryReportsItOnTheAdaptersPciDevice) {
    FakeRoot root;
    root.AddPci("0000:19:00.0", "9005 028d 9005 0557 010400", "aacraid");
    AddHost(root, "0000:19:00.0", "host1", "aacraid", {{"hba_kernel_version", "7.18-0[32114]\n"}});
    NoTpm tpm;
    const std::string xml = svmtest::Collect(svm::CollectFirmwareInventory, root, tpm);
    auto apps = svmtest::Select(xml,
                                "//Device[@enum='0000:19:00.0' and @vendorID='9005' and @deviceID='028d']"
                                "/Application[@componentType='FRMW']");
    ASSERT_EQ(apps.size(), 1u) << xml;
    EXPECT_EQ(apps[0]["version"], "7.18-0[32114]");
    EXPECT_THAT(svmtest::Failures(xml), ElementsAre());
}

}  // namespace
