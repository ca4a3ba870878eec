#include "BmcInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"

using svmtest::FakeRoot;
using svmtest::Select;

namespace svm {
namespace {

class FakeTransport : public IBmcTransport {
  public:
    bool ok = true;
    std::vector<uint8_t> answer;
    int calls = 0;
    uint8_t netfn = 0, cmd = 0;

    bool Request(uint8_t n, uint8_t c, const std::vector<uint8_t>&, std::vector<uint8_t>& response,
                 std::string& error) override {
        ++calls;
        netfn = n;
        cmd = c;
        if (!ok) {
            error = "IPMI request failed with status 320";
            return false;
        }
        response = answer;
        return true;
    }
};

std::string Collect(const FakeRoot& root, FakeTransport& transport) {
    SvmDocument doc;
    ModuleOptions options;
    options.root = root.Path();
    CollectBmcInventory(options, doc, transport);
    return doc.ToString();
}

TEST(BmcInventoryTest, GetDeviceIdGivesFirmwareRevision) {
    FakeRoot root;
    root.Write("/dev/ipmi0", "");
    FakeTransport transport;
    // cc, device id, revision, fw major (bit 7: update in progress), fw minor BCD, ...
    transport.answer = {0x00, 0x20, 0x81, 0x83, 0x30, 0x02, 0xbf, 0xa2, 0x02, 0x00, 0x00, 0x01};
    std::string xml = Collect(root, transport);
    EXPECT_EQ(0x06, transport.netfn);
    EXPECT_EQ(0x01, transport.cmd);
    auto apps = Select(xml, "/SVMInventory/Device[@FQDD='BMC.Embedded.1']/Application");
    ASSERT_EQ(1u, apps.size()) << xml;
    EXPECT_EQ("FRMW", apps[0]["componentType"]);
    EXPECT_EQ("3.30", apps[0]["version"]);
}

TEST(BmcInventoryTest, NoIpmiInterfaceFailsWithoutAsking) {
    FakeRoot root;
    FakeTransport transport;
    std::string xml = Collect(root, transport);
    EXPECT_EQ(0, transport.calls);
    auto status = Select(xml, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("no IPMI device"));
}

TEST(BmcInventoryTest, SmbiosIpmiRecordIsEnoughToAsk) {
    FakeRoot root;
    root.Write("/sys/firmware/dmi/entries/38-0/type", "38\n");
    FakeTransport transport;
    transport.ok = false;
    std::string xml = Collect(root, transport);
    EXPECT_EQ(1, transport.calls);
    auto status = Select(xml, "//SPStatus/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("320"));
}

struct DecodeCase {
    std::vector<uint8_t> response;
    bool ok;
    std::string revision;
};

class DecodeRevisionTest : public ::testing::TestWithParam<DecodeCase> {};

TEST_P(DecodeRevisionTest, Decodes) {
    std::string revision, error;
    EXPECT_EQ(GetParam().ok, DecodeFirmwareRevision(GetParam().response, revision, error));
    if (GetParam().ok)
        EXPECT_EQ(GetParam().revision, revision);
    else
        EXPECT_FALSE(error.empty());
}

INSTANTIATE_TEST_SUITE_P(Table, DecodeRevisionTest,
                         ::testing::Values(DecodeCase{{0x00, 0x20, 0x01, 0x02, 0x05}, true, "2.05"},
                                           DecodeCase{{0x00, 0x20, 0x01, 0x7f, 0x99}, true, "127.99"},
                                           DecodeCase{{0x00, 0x20, 0x01, 0x01, 0x1a}, false, ""},
                                           DecodeCase{{0xc1}, false, ""}, DecodeCase{{}, false, ""},
                                           DecodeCase{{0x00, 0x20, 0x01, 0x02}, false, ""}));

}  // namespace
}  // namespace svm
