#include "BmcInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"

using svmtest::Collect;
using svmtest::Failures;
using svmtest::Select;

namespace svm {
namespace {

struct FakeTransport : IBmcTransport {
    bool ok = true;
    std::vector<uint8_t> answer;
    std::vector<int> asked;  // netfn, cmd of each request
    bool Request(uint8_t netfn, uint8_t cmd, const std::vector<uint8_t>&, std::vector<uint8_t>& response,
                 std::string& error) override {
        asked.insert(asked.end(), {netfn, cmd});
        error = "IPMI request failed with status 320";
        response = answer;
        return ok;
    }
};

TEST(BmcInventoryTest, GetDeviceIdGivesTheFirmwareRevision) {
    svmtest::FakeRoot root;
    root.Write("/dev/ipmi0", "");
    FakeTransport transport;
    // cc, device id, revision, fw major (bit 7: update in progress), fw minor BCD, ...
    transport.answer = {0x00, 0x20, 0x81, 0x83, 0x30, 0x02, 0xbf, 0xa2, 0x02, 0x00, 0x00, 0x01};
    const std::string xml = Collect(CollectBmcInventory, root, transport);
    EXPECT_EQ((std::vector<int>{0x06, 0x01}), transport.asked);
    auto apps =
        Select(xml, "/SVMInventory/Device[@FQDD='BMC.Embedded.1']/Application[@componentType='FRMW']");
    ASSERT_EQ(1u, apps.size()) << xml;
    EXPECT_EQ("3.30", apps[0]["version"]);
}

TEST(BmcInventoryTest, FailuresWithoutAnInterfaceOrAnAnswer) {
    svmtest::FakeRoot root;
    FakeTransport transport;
    auto failures = Failures(Collect(CollectBmcInventory, root, transport));
    EXPECT_TRUE(transport.asked.empty());
    ASSERT_EQ(1u, failures.size());
    EXPECT_NE(std::string::npos, failures[0].find("no IPMI device"));
    root.Write("/sys/firmware/dmi/entries/38-0/type", "38\n");  // an SMBIOS IPMI record is enough to ask
    transport.ok = false;
    failures = Failures(Collect(CollectBmcInventory, root, transport));
    EXPECT_EQ(2u, transport.asked.size());
    ASSERT_EQ(1u, failures.size());
    EXPECT_NE(std::string::npos, failures[0].find("320"));
}

TEST(BmcInventoryTest, DecodeFirmwareRevision) {
    const std::pair<std::vector<uint8_t>, std::string> rows[] = {{{0x00, 0x20, 0x01, 0x02, 0x05}, "2.05"},
                                                                 {{0x00, 0x20, 0x01, 0x7f, 0x99}, "127.99"},
                                                                 {{0x00, 0x20, 0x01, 0x01, 0x1a}, "error"},
                                                                 {{0xc1}, "error"},
                                                                 {{}, "error"},
                                                                 {{0x00, 0x20, 0x01, 0x02}, "error"}};
    for (const auto& row : rows) {
        std::string revision, error;
        const bool ok = DecodeFirmwareRevision(row.first, revision, error);
        EXPECT_EQ(row.second, ok ? revision : error.empty() ? "no message" : "error");
    }
}

}  // namespace
}  // namespace svm
